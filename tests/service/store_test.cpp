#include "service/store/Store.hpp"
#include "support/TestCertificate.hpp"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <string>
#include <thread>
#include <vector>

namespace KeloServiceTest {
namespace {

using KeloService::DatabaseError;
using KeloService::Store;

std::string errorFor(const std::string& file) {
    try {
        const Store store(file);
        return "none";
    } catch (const DatabaseError& error) {
        return error.what();
    }
}

TEST(Store, RefusesWhatIsNoDatabase) {
    const TemporaryFolder folder;
    const std::string file = folder.write("text.db", std::string(5000, 'x'));
    const std::string error = errorFor(file);
    EXPECT_NE(error.find(file), std::string::npos) << error;
    EXPECT_NE(error.find("not a database"), std::string::npos) << error;
    EXPECT_NE(errorFor(folder.file("none/at/all.db")).find("unable to open"), std::string::npos);
    EXPECT_NE(errorFor("/").find("unable to open"), std::string::npos);
}

TEST(Store, RefusesAnotherProgramsDatabase) {
    const TemporaryFolder folder;
    const std::string file = folder.file("other.db");
    sqlite3* other = nullptr;
    sqlite3_open(file.c_str(), &other);
    sqlite3_exec(other, "CREATE TABLE precious (x)", nullptr, nullptr, nullptr);
    sqlite3_close(other);
    EXPECT_NE(errorFor(file).find("another program"), std::string::npos);
}

TEST(Store, RefusesAnotherVersionsDatabase) {
    const TemporaryFolder folder;
    const std::string file = folder.file("old.db");
    { Store(file).database.execute("PRAGMA user_version = 99"); }
    EXPECT_NE(errorFor(file).find("another version"), std::string::npos);
}

TEST(Store, TakesAnEmptyFile) {
    const TemporaryFolder folder;
    EXPECT_EQ(errorFor(folder.write("empty.db", "")), "none");
}

TEST(Store, KeepsSessionsInTheFile) {
    const TemporaryFolder folder;
    const std::string file = folder.file("service.db");
    {
        Store store(file);
        store.sessions.add(1002, "kept");
        EXPECT_TRUE(store.sessions.expire("kept"));
    }
    Store again(file);
    const auto session = again.sessions.find("kept");
    ASSERT_TRUE(session);
    EXPECT_EQ(session->userId, 1002);
    EXPECT_TRUE(session->expired);
}

TEST(Store, KeepsPasswordsOnlyAsHashes) {
    Store store(":memory:");
    auto query = store.database.query("SELECT count(*), count(DISTINCT passwordHash) FROM users "
                                      "WHERE passwordHash NOT LIKE '%loop%'");
    query.next();
    EXPECT_EQ(query.integer(0), query.integer(1));
    EXPECT_GT(query.integer(0), 0);
}

TEST(Database, ReportsWhatSqliteSays) {
    Store store(":memory:");
    EXPECT_THROW(store.database.query("SELECT nothing FROM nowhere"), DatabaseError);
    EXPECT_THROW(store.database.execute("nonsense"), DatabaseError);
    EXPECT_THROW(store.database.query("INSERT INTO follows VALUES (?1, ?2)").bind(nullptr, 1).run(),
                 DatabaseError);
}

TEST(Store, IsUsedFromManyThreads) {
    Store store(":memory:");
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&store, t] {
            for (int i = 0; i < 20; ++i) {
                const std::string key = std::to_string(t) + "-" + std::to_string(i);
                store.sessions.add(1001 + t, key);
                EXPECT_EQ(store.sessions.find(key)->userId, 1001 + t);
                EXPECT_EQ(
                    store.feeds.after(KeloService::popularFeed(), std::nullopt, 5).rows.size(), 5U);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(store.sessions.list().size(), 161U);
}

} // namespace
} // namespace KeloServiceTest
