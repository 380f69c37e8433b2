#include "service/seed/Seed.hpp"

#include "service/Encoding.hpp"
#include "service/seed/Captions.hpp"

#include <algorithm>
#include <map>
#include <set>
#include <string>

namespace KeloService {
namespace {

constexpr std::int64_t postCount = 1240;
constexpr std::int64_t pickCount = 23;
constexpr std::int64_t minute = 60000;
constexpr std::int64_t day = 1440 * minute;
constexpr std::int64_t firstChannelId = 1;
constexpr std::int64_t firstTagId = 501;

/// 0 for an unknown name.
std::int64_t seededUserId(const std::string& username) {
    const auto everyone = people();
    const auto found =
        std::find_if(everyone.begin(), everyone.end(),
                     [&username](const Person& person) { return person.username == username; });
    return found == everyone.end() ? 0 : firstSeededUserId + (found - everyone.begin());
}

class Seeder {
public:
    explicit Seeder(Database& database)
        : database_(database) {}

    void run() {
        addUsers();
        addFollows();
        addChannels();
        for (std::int64_t i = 0; i < postCount; ++i) {
            addPost(i);
        }
        for (std::int64_t rank = 0; rank < pickCount; ++rank) {
            const std::int64_t number = rank * (postCount / pickCount);
            database_.run("UPDATE posts SET pickRank = ?1 WHERE postId = ?2", rank,
                          firstSeededPostId + number * seededPostIdStep);
        }
        database_.run(
            "UPDATE users SET followingCount = "
            "(SELECT count(*) FROM follows WHERE follows.userId = users.userId), likeCount = "
            "(SELECT count(*) FROM likes WHERE likes.userId = users.userId)");
        database_.run("INSERT INTO sessions (key, userId) VALUES (?1, ?2)", developmentSessionKey,
                      firstSeededUserId);
    }

private:
    void addUsers() {
        std::int64_t userId = firstSeededUserId;
        for (const Person& person : people()) {
            const std::string salt = "salt-" + std::to_string(userId);
            // One random number per line: the order in which arguments are evaluated is not fixed.
            const std::int64_t created = seededMoment - random_.between(420, 1000) * day;
            const bool verified = random_.oneIn(6);
            const bool isPrivate = random_.oneIn(12);
            const std::int64_t loops = random_.skewed(9) + 1200;
            const double velocity = static_cast<double>(random_.below(4000)) / 64;
            const std::int64_t followers = random_.skewed(6);
            database_.run(
                "INSERT INTO users VALUES (?1, ?2, ?3, ?4, '/media/avatars/' || ?1 || '.png',"
                "?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, 0, 0)",
                userId, person.username, salt, hashPassword(std::string(developmentPassword), salt),
                person.description, person.location, created, verified, isPrivate, loops, velocity,
                followers);
            ++userId;
        }
    }

    void addFollows() {
        for (std::int64_t i = 0; i < std::ssize(people()); ++i) {
            const std::int64_t userId = firstSeededUserId + i;
            for (std::int64_t count = random_.between(12, 24); count > 0; --count) {
                const std::int64_t followee = someUser();
                if (followee != userId) {
                    database_.run("INSERT OR IGNORE INTO follows VALUES (?1, ?2)", userId,
                                  followee);
                }
            }
        }
    }

    void addChannels() {
        std::int64_t channelId = firstChannelId;
        for (const ChannelTheme& theme : channelThemes()) {
            database_.run("INSERT INTO channels VALUES (?1, ?2, ?3, 'FFFFFF', ?4, ?5, ?6)",
                          channelId, theme.name, theme.description, theme.backgroundColor,
                          theme.vanityUrl, seededMoment - random_.between(500, 900) * day);
            ++channelId;
        }
    }

    void addPost(std::int64_t number) {
        postId_ = firstSeededPostId + number * seededPostIdStep;
        // Ids ascend with time.
        created_ = seededMoment - (postCount - number) * 431 * minute + random_.below(400 * minute);
        permalinkId_ = "k" + std::to_string(random_.next() % 90000000000 + 10000000000);
        const auto themes = channelThemes();
        const std::int64_t theme = random_.below(std::ssize(themes));
        const std::string caption = makeCaption(random_, themes[static_cast<std::size_t>(theme)]);
        addPostRow(theme, caption);
        addRenditions();
        addMarks(caption);
        addLikes();
        addComments();
    }

    void addPostRow(std::int64_t theme, const std::string& caption) {
        // A few popularities are shared, so that their order depends on the ids.
        const std::int64_t popularity = random_.below(postCount);
        const std::int64_t author = someUser();
        const std::int64_t loops = random_.skewed(9);
        const double velocity = static_cast<double>(random_.below(20000)) / 128;
        const bool onFire = random_.oneIn(20);
        const std::int64_t likes = random_.skewed(6) + 5;
        const std::int64_t comments = random_.skewed(4) + 3;
        const std::int64_t reposts = random_.skewed(5) + 1;
        const auto channel =
            random_.oneIn(7) ? std::nullopt : std::optional(firstChannelId + theme);
        database_.run("INSERT INTO posts VALUES "
                      "(?1, ?2, ?3, ?4, ?5, ?6, ?7, NULL, ?8, ?9, ?10, ?11, ?12, ?13, NULL, NULL)",
                      postId_, author, channel, created_, caption, permalinkId_, popularity, loops,
                      velocity, onFire, likes, comments, reposts);
    }

    void addRenditions() {
        struct Shape {
            const char* format;
            int rate;
            const char* suffix;
        };
        constexpr Shape shapes[] = {
            {"h264", 200, "_low.mp4"},  {"h264", 0, ".mp4"},
            {"h264", 900, "_high.mp4"}, {"h264-preview", 0, "_preview.mp4"},
            {"hls", 0, "/index.m3u8"},
        };
        const std::int64_t revision = random_.between(1, 9);
        // Old posts were never encoded again, and some lack the smallest file.
        const std::int64_t count = random_.oneIn(5) ? 3 : std::ssize(shapes);
        const std::int64_t first = random_.oneIn(9) ? 1 : 0;
        for (std::int64_t position = first; position < count; ++position) {
            const Shape& shape = shapes[position];
            // Each file of a post has a version of its own.
            database_.run(
                "INSERT INTO renditions VALUES (?1, ?2, ?3, ?4, ?5, '/media/videos/' || ?6)",
                postId_, position, shape.format, shape.rate, 10 * revision + position,
                permalinkId_ + shape.suffix);
        }
    }

    void addMarks(const std::string& caption) {
        for (const Mark& mark : findMarks(caption)) {
            const bool isTag = mark.sign == '#';
            const std::int64_t target = isTag ? tagId(mark.word) : seededUserId(mark.word);
            if (target == 0) {
                continue;
            }
            if (isTag) {
                database_.run("INSERT OR IGNORE INTO postTags VALUES (?1, ?2)", postId_, target);
            }
            database_.run("INSERT INTO entities VALUES (?1, ?2, ?3, ?4, ?5, ?6)", postId_,
                          mark.start, mark.end, isTag ? "tag" : "mention", target, mark.word);
        }
    }

    std::int64_t tagId(const std::string& name) {
        const auto [found, added] = tagIds_.try_emplace(name, firstTagId + std::ssize(tagIds_));
        if (added) {
            database_.run("INSERT INTO tags VALUES (?1, ?2, 0)", found->second, name);
        }
        return found->second;
    }

    void addLikes() {
        std::set<std::int64_t> fans;
        for (std::int64_t count = random_.below(5); count > 0; --count) {
            fans.insert(someUser());
        }
        if (random_.oneIn(6)) {
            fans.insert(firstSeededUserId);
        }
        for (const std::int64_t fan : fans) {
            database_.run("INSERT INTO likes (postId, userId, created) VALUES (?1, ?2, ?3)",
                          postId_, fan, created_ + random_.between(1, 30) * minute);
        }
        if (random_.oneIn(15)) {
            database_.run("INSERT INTO reposts (postId, userId, created) VALUES (?1, ?2, ?3)",
                          postId_, firstSeededUserId, created_ + 40 * minute);
        }
    }

    void addComments() {
        for (std::int64_t count = random_.below(4); count > 0; --count) {
            const std::int64_t author = someUser();
            const std::int64_t time = created_ + random_.between(1, 500) * minute;
            database_.run("INSERT INTO comments (postId, userId, created, comment) "
                          "VALUES (?1, ?2, ?3, ?4)",
                          postId_, author, time, makeComment(random_));
        }
    }

    std::int64_t someUser() { return firstSeededUserId + random_.below(std::ssize(people())); }

    Database& database_;
    Random random_{20160301};
    std::map<std::string, std::int64_t> tagIds_;
    /// Of the post that is being added.
    std::int64_t postId_ = 0;
    std::int64_t created_ = 0;
    std::string permalinkId_;
};

} // namespace

void seedIfEmpty(Database& database) {
    if (database.number("SELECT 1 FROM users LIMIT 1")) {
        return;
    }
    database.transact([&database] {
        Seeder(database).run();
        seedExtras(database);
    });
}

} // namespace KeloService
