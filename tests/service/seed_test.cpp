#include "service/seed/Captions.hpp"
#include "service/store/Store.hpp"
#include "support/TestCertificate.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace KeloServiceTest {
namespace {

using KeloService::Database;
using KeloService::Query;
using KeloService::Store;

std::int64_t number(Database& database, const std::string& sql) {
    Query query = database.query(sql);
    query.next();
    return query.integer(0);
}

/// Everything that the seed decides, as one text.
std::string content(Database& database) {
    std::string text;
    for (const char* table : {"users",    "channels", "posts",      "renditions", "tags",
                              "postTags", "entities", "likes",      "comments",   "reposts",
                              "follows",  "sessions", "longforms",  "sounds",     "venueCategories",
                              "venues",   "tracks",   "postExtras", "bylines",    "images"}) {
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
    Store store(":memory:");
    EXPECT_GE(number(store.database, "SELECT count(*) FROM users"), 36);
    EXPECT_GE(number(store.database, "SELECT count(*) FROM posts"), 1000);
    EXPECT_GE(number(store.database, "SELECT count(*) FROM channels"), 8);
    EXPECT_GE(number(store.database, "SELECT min(n) FROM (SELECT count(*) n FROM posts "
                                     "WHERE channelId IS NOT NULL GROUP BY channelId)"),
              50);
    EXPECT_GE(number(store.database, "SELECT count(*) FROM follows WHERE userId = 1001"), 10);
    for (const char* part :
         {"🐈", "👨‍👩‍👧‍👦", "🇵🇹", "e\u0301", "#", "@", "今日", "السلام", "\n"}) {
        EXPECT_GT(number(store.database, "SELECT count(*) FROM posts WHERE instr(caption, '" +
                                             std::string(part) + "')"),
                  5)
            << part;
    }
    EXPECT_GT(number(store.database, "SELECT count(*) FROM posts WHERE caption = ''"), 5);
    EXPECT_GT(number(store.database, "SELECT count(*) FROM entities WHERE type = 'mention'"), 100);
}

TEST(Seed, IsTheSameEveryTime) {
    Store one(":memory:");
    Store other(":memory:");
    EXPECT_EQ(content(one.database), content(other.database));
}

TEST(Seed, PostsAscendInTime) {
    Store store(":memory:");
    EXPECT_EQ(number(store.database, "SELECT count(*) FROM posts a JOIN posts b "
                                     "ON b.postId = a.postId + 4111 AND b.created <= a.created"),
              0);
}

TEST(Seed, SomePopularitiesAreShared) {
    Store store(":memory:");
    EXPECT_GT(number(store.database, "SELECT count(*) - count(DISTINCT popularity) FROM posts"),
              50);
}

TEST(Seed, AFileIsSeededOnce) {
    const TemporaryFolder folder;
    const std::string file = folder.file("service.db");
    std::string before;
    {
        Store store(file);
        store.database.execute("DELETE FROM posts WHERE postId % 2 = 0");
        before = content(store.database);
    }
    Store again(file);
    EXPECT_EQ(content(again.database), before);
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
