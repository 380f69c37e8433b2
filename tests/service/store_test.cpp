#include "service/seed/Captions.hpp"
#include "service/store/Database.hpp"
#include "support/TestCertificate.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace KeloServiceTest {
namespace {

using KeloService::Database;
using KeloService::DatabaseError;
using KeloService::Query;

std::string errorFor(const std::string& file) {
    try {
        const Database database(file);
        return "none";
    } catch (const DatabaseError& error) {
        return error.what();
    }
}

TEST(Store, RefusesWhatIsNoDatabase) {
    const TemporaryFolder folder;
    const std::string file = folder.write("text.db", std::string(5000, 'x'));
    EXPECT_EQ(errorFor(file), "cannot use the database " + file + ": file is not a database");
    EXPECT_NE(errorFor(folder.path("none/at/all.db")).find("unable to open"), std::string::npos);
    EXPECT_NE(errorFor("/").find("unable to open"), std::string::npos);
    EXPECT_EQ(errorFor(folder.write("empty.db", "")), "none");
}

TEST(Store, RefusesDatabasesOfOthers) {
    const TemporaryFolder folder;
    const std::string file = folder.path("service.db");
    { Database(file).execute("PRAGMA user_version = 99"); }
    EXPECT_NE(errorFor(file).find("another version"), std::string::npos);
    sqlite3* same = nullptr;
    sqlite3_open(file.c_str(), &same);
    sqlite3_exec(same, "PRAGMA application_id = 0", nullptr, nullptr, nullptr);
    sqlite3_close(same);
    EXPECT_NE(errorFor(file).find("another program"), std::string::npos);
}

TEST(Store, KeepsPasswordsOnlyAsHashes) {
    Database database(":memory:");
    EXPECT_EQ(database.number("SELECT count(DISTINCT passwordHash) FROM users "
                              "WHERE passwordHash NOT LIKE '%loop%'"),
              database.number("SELECT count(*) FROM users"));
}

TEST(Store, ReportsWhatSqliteSays) {
    Database database(":memory:");
    EXPECT_THROW(database.query("SELECT nothing FROM nowhere"), DatabaseError);
    EXPECT_THROW(database.execute("nonsense"), DatabaseError);
    EXPECT_THROW(
        database.run("INSERT INTO follows VALUES (?1, ?2)", std::optional<std::int64_t>(), 1),
        DatabaseError);
}

TEST(Store, KeepsAllOfATransactionOrNothing) {
    Database database(":memory:");
    const auto before = database.number("SELECT count(*) FROM follows");
    EXPECT_THROW(database.transact([&database] {
        EXPECT_EQ(database.run("DELETE FROM follows WHERE userId = 1001 AND followeeId IN "
                               "(SELECT followeeId FROM follows WHERE userId = 1001 LIMIT 2)"),
                  2);
        database.run("nonsense");
    }),
                 DatabaseError);
    EXPECT_EQ(database.number("SELECT count(*) FROM follows"), before);
}

TEST(Store, IsUsedFromManyThreads) {
    Database database(":memory:");
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&database, t] {
            for (int i = 0; i < 20; ++i) {
                const std::string key = std::to_string(t) + "-" + std::to_string(i);
                database.run("INSERT INTO sessions (key, userId) VALUES (?1, ?2)", key, 1001 + t);
                EXPECT_EQ(database.number("SELECT userId FROM sessions WHERE key = ?1", key),
                          1001 + t);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(database.number("SELECT count(*) FROM sessions"), 161);
}

/// Everything that the seed decides, as one text.
std::string content(Database& database) {
    std::string text;
    for (const char* table : {"users", "channels", "posts", "renditions", "tags", "postTags",
                              "entities", "likes", "comments", "reposts", "follows", "sessions",
                              "longforms", "sounds", "venues", "tracks", "bylines", "images"}) {
        Query query = database.query("SELECT * FROM " + std::string(table) + " ORDER BY 1, 2");
        while (query.next()) {
            for (int column = 0; column < query.columns(); ++column) {
                text += query.text(column) + '\t';
            }
            text += '\n';
        }
    }
    return text;
}

TEST(Seed, IsBelievable) {
    Database database(":memory:");
    const auto expectMore = [&database](const std::string& sql, std::int64_t least) {
        EXPECT_GE(database.number(sql).value(), least) << sql;
    };
    expectMore("SELECT count(*) FROM users", 36);
    expectMore("SELECT count(*) FROM posts", 1000);
    expectMore("SELECT count(*) FROM channels", 8);
    expectMore("SELECT min(n) FROM (SELECT count(*) n FROM posts "
               "WHERE channelId IS NOT NULL GROUP BY channelId)",
               50);
    expectMore("SELECT count(*) FROM follows WHERE userId = 1001", 10);
    expectMore("SELECT count(*) FROM posts WHERE caption = ''", 6);
    expectMore("SELECT count(*) FROM entities WHERE type = 'mention'", 101);
    expectMore("SELECT count(*) - count(DISTINCT popularity) FROM posts", 51);
    for (const std::string part :
         {"🐈", "👨‍👩‍👧‍👦", "🇵🇹", "e\u0301", "#", "@", "今日", "السلام", "\n"}) {
        expectMore("SELECT count(*) FROM posts WHERE instr(caption, '" + part + "')", 6);
    }
    EXPECT_EQ(database.number("SELECT count(*) FROM posts a JOIN posts b "
                              "ON b.postId = a.postId + 4111 AND b.created <= a.created"),
              0)
        << "posts ascend in time";
}

TEST(Seed, IsTheSameEveryTimeAndSownOnce) {
    const TemporaryFolder folder;
    const std::string file = folder.path("service.db");
    std::string before;
    {
        Database one(":memory:");
        Database other(file);
        EXPECT_EQ(content(one), content(other));
        other.execute("DELETE FROM posts WHERE postId % 2 = 0");
        before = content(other);
    }
    Database again(file);
    EXPECT_EQ(content(again), before);
}

TEST(Captions, MarksAreCountedInCodePoints) {
    const auto marks = KeloService::findMarks("😂 #a_1 @theo.loops. #é\u0301 # @ #日");
    ASSERT_EQ(marks.size(), 3U);
    EXPECT_EQ(marks[0].word, "a_1");
    EXPECT_EQ(marks[0].start, 2);
    EXPECT_EQ(marks[0].end, 6);
    EXPECT_EQ(marks[1].sign, '@');
    EXPECT_EQ(marks[1].word, "theo.loops");
    EXPECT_EQ(marks[1].start, 7);
    EXPECT_EQ(marks[1].end, 18);
    EXPECT_EQ(marks[2].word, "é\u0301");
}

} // namespace
} // namespace KeloServiceTest
