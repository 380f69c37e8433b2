#include "PropertyListFile.hpp"
#include "PropertyListText.hpp"
#include "support/TemporaryFolder.hpp"

#include <gtest/gtest.h>

#include <cstdlib>

namespace KeloAPI::testing {

namespace {

bool runOracle(const std::string& verb, const TemporaryFolder& folder) {
    return std::system((KELO_PLISTLIB_ORACLE " " + verb + " '" + folder.path() + "'").c_str()) == 0;
}

} // namespace

TEST(PlistlibTest, ReadsWhatWeWriteAndWritesWhatWeRead) {
    const TemporaryFolder folder;
    ASSERT_TRUE(runOracle("write", folder));
    int count = 0;
    for (const std::string& name : folder.names()) {
        if (name.ends_with(".plist")) {
            const std::string stem = name.substr(0, name.size() - 6);
            const auto list = PropertyListFile::read(folder.read(name));
            ASSERT_TRUE(list) << stem;
            EXPECT_EQ(PropertyListText::of(*list), folder.read(stem + ".text"));
            folder.write(stem + ".again", BinaryPropertyList::write(*list));
            ++count;
        }
    }
    EXPECT_EQ(count, 306);
    EXPECT_TRUE(runOracle("read", folder));
}

} // namespace KeloAPI::testing
