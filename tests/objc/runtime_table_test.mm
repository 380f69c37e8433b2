#import <KeloAPIObjC/KeloAPIObjC.h>

#include "objc/ObjcTest.hpp"

#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

extern "C" NSString *KeloRuntimeTable(Class anyOfLibrary);

namespace {

/// Each selector with its class in front of it.
std::set<std::string> namedLines(const std::string &table) {
    std::set<std::string> lines;
    std::istringstream text(table);
    std::string owner;
    for (std::string line; std::getline(text, line);) {
        const bool belongs = line.compare(0, 4, "    ") == 0;
        owner = belongs ? owner : line;
        lines.insert(belongs ? owner + line.substr(3) : line);
    }
    return lines;
}

std::string lacking(const std::set<std::string> &all, const std::set<std::string> &some) {
    std::string lines;
    for (const std::string &line : all) {
        lines += some.count(line) == 0 ? "    " + line + "\n" : "";
    }
    return lines;
}

} // namespace

/// What hosts call is listed beside this file, so that nothing of it gets lost or comes in unseen.
TEST(RuntimeTableTest, IsTheListedOne) {
    const std::string table = [KeloRuntimeTable([KLBridged class]) UTF8String];
    std::ofstream(KELO_RUNTIME_TABLE_HERE) << table;
    std::ifstream file(KELO_RUNTIME_TABLE_LISTED);
    const std::string listed{std::istreambuf_iterator<char>(file), {}};
    ASSERT_FALSE(listed.empty());
    EXPECT_EQ(lacking(namedLines(listed), namedLines(table)), "") << "listed, but not there";
    EXPECT_EQ(lacking(namedLines(table), namedLines(listed)), "")
        << "there, but not listed; if it is meant to be, take the list from "
        << KELO_RUNTIME_TABLE_HERE;
}
