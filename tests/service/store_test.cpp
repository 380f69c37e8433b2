#include "../support/TemporaryFolder.hpp"
#include "service/media/MediaFiles.hpp"
#include "service/media/Mp4.hpp"
#include "service/seed/Captions.hpp"
#include "service/store/Database.hpp"
#include "service/store/UploadFolder.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>

namespace KeloServiceTest {
namespace {

using KeloAPI::testing::TemporaryFolder;
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

/// Everything that the seed decides, as one text.
std::string content(Database& database) {
    std::string text;
    for (const char* table : {"users", "channels", "posts", "renditions", "tags", "postTags",
                              "entities", "likes", "comments", "reposts", "follows", "sessions",
                              "longforms", "sounds", "venues", "tracks", "bylines"}) {
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

TEST(MediaFiles, HasNoOtherSizes) {
    EXPECT_THROW(KeloService::mediaFiles("videos/64"), std::out_of_range);
    EXPECT_THROW(KeloService::mediaFiles("pictures"), std::out_of_range);
}

TEST(UploadFolder, IsTemporaryWithoutADatabaseFile) {
    std::string path;
    {
        const KeloService::UploadFolder folder(":memory:");
        path = folder.path("");
        for (const bool isKept : {true, false}) {
            std::string name;
            {
                KeloService::FileWriter file(folder);
                EXPECT_TRUE(file.write("abc"));
                name = folder.path(file.file().name);
                if (isKept) {
                    file.keep();
                }
            }
            EXPECT_EQ(std::filesystem::exists(name), isKept);
        }
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}

bool isMp4(const std::string& bytes) {
    return KeloService::isMp4(
        static_cast<std::int64_t>(bytes.size()), [&](std::int64_t offset, std::size_t count) {
            // Piece by piece, as from files that are joined.
            return bytes.substr(static_cast<std::size_t>(offset), std::min<std::size_t>(count, 3));
        });
}

TEST(Mp4Check, LooksAtTheOutermostBoxes) {
    using KeloService::box;
    const std::string ftyp = box("ftyp", "isom");
    const std::string moov = box("moov", "index");
    const std::string mdat = box("mdat", "media");
    // A length in 64 bits behind the kind.
    const std::string longHead("\0\0\0\1mdat\0\0\0\0\0\0\0\x12", 16);
    const std::pair<std::string, bool> files[] = {
        {ftyp + moov + mdat, true},
        {ftyp + mdat + box("free", "") + moov, true},
        {"", false},
        {ftyp, false},
        {ftyp + moov, false},
        {ftyp + mdat, false},
        {moov + ftyp + mdat, false},
        {ftyp + moov + mdat + "1234567", false},
        {ftyp + moov + mdat.substr(0, mdat.size() - 1), false},
        {ftyp + moov + std::string("\0\0\0\7mdat", 8), false},
        {ftyp + moov + std::string("\0\0\0\0mdat to the end", 19), true},
        {ftyp + moov + longHead + "ab", true},
        {ftyp + moov + longHead + "a", false},
        {ftyp + moov + longHead + "abc", false},
        {ftyp + moov + std::string("\0\0\0\1mdat\xff\xff\xff\xff\xff\xff\xff\xff", 16), false},
    };
    for (const auto& [bytes, expected] : files) {
        EXPECT_EQ(isMp4(bytes), expected) << bytes;
    }
}

} // namespace
} // namespace KeloServiceTest
