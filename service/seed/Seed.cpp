#include "service/seed/Seed.hpp"

#include "service/seed/Captions.hpp"
#include "service/seed/Catalogue.hpp"
#include "service/seed/Extras.hpp"
#include "service/store/Password.hpp"

#include <algorithm>
#include <map>
#include <set>
#include <string>

namespace KeloService {
namespace {

constexpr std::int64_t postCount = 1240;
constexpr std::int64_t pickCount = 23;
constexpr std::int64_t now = seededMoment;
constexpr std::int64_t minute = 60000;
constexpr std::int64_t firstUserId = firstSeededUserId;
constexpr std::int64_t firstChannelId = 1;
constexpr std::int64_t firstPostId = firstSeededPostId;
constexpr std::int64_t postIdStep = seededPostIdStep;

class Seeder {
public:
    explicit Seeder(Database& database)
        : database_(database) {}

    void run() {
        addUsers();
        addChannels();
        for (std::int64_t i = 0; i < postCount; ++i) {
            addPost(i);
        }
        choosePicks();
        database_.execute("UPDATE users SET likeCount = "
                          "(SELECT count(*) FROM likes WHERE likes.userId = users.userId)");
    }

private:
    void addUsers();
    void addFollows(std::int64_t userId);
    void addChannels();
    void addPost(std::int64_t number);
    void addPostRow(std::int64_t theme, const std::string& caption);
    void addRenditions();
    void addMarks(const std::string& caption);
    void addLikes();
    void addComments();
    void choosePicks();
    std::int64_t tagId(const std::string& name);
    /// 0 for an unknown name.
    static std::int64_t userId(const std::string& username);
    std::int64_t someUser() { return firstUserId + random_.below(userCount()); }
    static std::int64_t userCount() { return static_cast<std::int64_t>(people().size()); }

    Database& database_;
    Random random_{20160301};
    std::map<std::string, std::int64_t> tagIds_;
    std::int64_t postId_ = 0;
    std::int64_t created_ = 0;
    std::string permalinkId_;
};

void Seeder::addUsers() {
    Query insert = database_.query("INSERT INTO users VALUES "
                                   "(?1,?2,?3,?4,?5,?6,?7,?8,?9,?10,?11,?12,?13,?14,?15)");
    std::int64_t userId = firstUserId;
    for (const Person& person : people()) {
        const std::string salt = "salt-" + std::to_string(userId);
        const std::string avatar = "/media/avatars/" + std::to_string(userId) + ".png";
        // One random number per line: the order in which arguments are evaluated is not fixed.
        const std::int64_t created = now - random_.between(420, 1000) * 1440 * minute;
        const bool verified = random_.oneIn(6);
        const bool isPrivate = random_.oneIn(12);
        const std::int64_t loops = random_.skewed(9) + 1200;
        const double velocity = static_cast<double>(random_.below(4000)) / 64;
        const std::int64_t followers = random_.skewed(6);
        insert.reset();
        insert.bind(userId, person.username, salt,
                    hashPassword(std::string(developmentPassword), salt), avatar,
                    person.description, person.location, created, verified, isPrivate, loops,
                    velocity, followers, 0, 0);
        insert.run();
        ++userId;
    }
    for (userId = firstUserId; userId < firstUserId + userCount(); ++userId) {
        addFollows(userId);
    }
    database_.execute("UPDATE users SET followingCount = "
                      "(SELECT count(*) FROM follows WHERE follows.userId = users.userId)");
    database_.query("INSERT INTO sessions (key, userId) VALUES (?1, ?2)")
        .bind(developmentSessionKey, firstUserId)
        .run();
}

void Seeder::addFollows(std::int64_t userId) {
    Query insert = database_.query("INSERT OR IGNORE INTO follows VALUES (?1, ?2)");
    for (std::int64_t count = random_.between(12, 24); count > 0; --count) {
        const std::int64_t followee = someUser();
        if (followee != userId) {
            insert.reset();
            insert.bind(userId, followee).run();
        }
    }
}

void Seeder::addChannels() {
    std::int64_t channelId = firstChannelId;
    for (const ChannelTheme& theme : channelThemes()) {
        database_.query("INSERT INTO channels VALUES (?1,?2,?3,?4,?5,?6,?7)")
            .bind(channelId, theme.name, theme.description, "FFFFFF", theme.backgroundColor,
                  theme.vanityUrl, now - random_.between(500, 900) * 1440 * minute)
            .run();
        ++channelId;
    }
}

void Seeder::addPost(std::int64_t number) {
    postId_ = firstPostId + number * postIdStep;
    // Ids ascend with time.
    created_ = now - (postCount - number) * 431 * minute + random_.below(400 * minute);
    permalinkId_ = "k" + std::to_string(random_.next() % 90000000000 + 10000000000);
    const auto themes = channelThemes();
    const std::int64_t theme = random_.below(static_cast<std::int64_t>(themes.size()));
    const std::string caption = makeCaption(random_, themes[static_cast<std::size_t>(theme)]);
    addPostRow(theme, caption);
    addRenditions();
    addMarks(caption);
    addLikes();
    addComments();
}

void Seeder::addPostRow(std::int64_t theme, const std::string& caption) {
    // A few popularities are shared, so that their order depends on the ids.
    const std::int64_t popularity = random_.below(postCount);
    const std::int64_t author = someUser();
    const std::int64_t loops = random_.skewed(9);
    const double velocity = static_cast<double>(random_.below(20000)) / 128;
    const bool onFire = random_.oneIn(20);
    const std::int64_t likes = random_.skewed(6) + 5;
    const std::int64_t comments = random_.skewed(4) + 3;
    const std::int64_t reposts = random_.skewed(5) + 1;
    const auto channel = random_.oneIn(7) ? std::nullopt : std::optional(firstChannelId + theme);
    database_.query("INSERT INTO posts VALUES (?1,?2,?3,?4,?5,?6,?7,NULL,?8,?9,?10,?11,?12,?13)")
        .bind(postId_, author, channel, created_, caption, permalinkId_, popularity, loops,
              velocity, onFire, likes, comments, reposts)
        .run();
}

void Seeder::addRenditions() {
    struct Shape {
        const char* format;
        double rate;
        const char* suffix;
    };
    constexpr Shape shapes[] = {
        {"h264", 200, "_low.mp4"},           {"h264", 0, ".mp4"},       {"h264", 900, "_high.mp4"},
        {"h264-preview", 0, "_preview.mp4"}, {"hls", 0, "/index.m3u8"},
    };
    const std::int64_t revision = random_.between(1, 9);
    // Old posts were never encoded again, and some lack the smallest file.
    const std::size_t count = random_.oneIn(5) ? 3 : std::size(shapes);
    const std::size_t first = random_.oneIn(9) ? 1 : 0;
    for (std::size_t i = first; i < count; ++i) {
        const auto position = static_cast<std::int64_t>(i);
        // Each file of a post has a version of its own.
        const std::string version = std::to_string(10 * revision + position);
        database_.query("INSERT INTO renditions VALUES (?1, ?2, ?3, ?4, ?5, ?6)")
            .bind(postId_, position, shapes[i].format, shapes[i].rate, version,
                  "/media/videos/" + permalinkId_ + shapes[i].suffix)
            .run();
    }
}

void Seeder::addMarks(const std::string& caption) {
    for (const Mark& mark : findMarks(caption)) {
        const auto target = mark.sign == '#' ? tagId(mark.word) : userId(mark.word);
        if (target == 0) {
            continue;
        }
        if (mark.sign == '#') {
            database_.query("INSERT OR IGNORE INTO postTags VALUES (?1, ?2)")
                .bind(postId_, target)
                .run();
        }
        database_.query("INSERT INTO entities VALUES (?1, ?2, ?3, ?4, ?5, ?6)")
            .bind(postId_, mark.start, mark.end, mark.sign == '#' ? "tag" : "mention", target,
                  mark.word)
            .run();
    }
}

std::int64_t Seeder::tagId(const std::string& name) {
    const auto [found, added] =
        tagIds_.try_emplace(name, static_cast<std::int64_t>(tagIds_.size()) + 501);
    if (added) {
        database_.query("INSERT INTO tags VALUES (?1, ?2, 0)").bind(found->second, name).run();
    }
    return found->second;
}

std::int64_t Seeder::userId(const std::string& username) {
    const auto everyone = people();
    const auto found =
        std::find_if(everyone.begin(), everyone.end(),
                     [&username](const Person& person) { return person.username == username; });
    return found == everyone.end() ? 0 : firstUserId + (found - everyone.begin());
}

void Seeder::addLikes() {
    std::set<std::int64_t> fans;
    for (std::int64_t count = random_.below(5); count > 0; --count) {
        fans.insert(someUser());
    }
    if (random_.oneIn(6)) {
        fans.insert(firstUserId);
    }
    for (const std::int64_t fan : fans) {
        database_.query("INSERT INTO likes (postId, userId, created) VALUES (?1, ?2, ?3)")
            .bind(postId_, fan, created_ + random_.between(1, 30) * minute)
            .run();
    }
    if (random_.oneIn(15)) {
        database_.query("INSERT INTO reposts (postId, userId, created) VALUES (?1, ?2, ?3)")
            .bind(postId_, firstUserId, created_ + 40 * minute)
            .run();
    }
}

void Seeder::addComments() {
    for (std::int64_t count = random_.below(4); count > 0; --count) {
        const std::int64_t author = someUser();
        const std::int64_t time = created_ + random_.between(1, 500) * minute;
        database_
            .query("INSERT INTO comments (postId, userId, created, comment) "
                   "VALUES (?1, ?2, ?3, ?4)")
            .bind(postId_, author, time, makeComment(random_))
            .run();
    }
}

void Seeder::choosePicks() {
    for (std::int64_t rank = 0; rank < pickCount; ++rank) {
        const std::int64_t number = rank * (postCount / pickCount);
        database_.query("UPDATE posts SET pickRank = ?1 WHERE postId = ?2")
            .bind(rank, firstPostId + number * postIdStep)
            .run();
    }
}

} // namespace

void seedIfEmpty(Database& database) {
    const auto lock = database.lock();
    {
        Query anyone = database.query("SELECT 1 FROM users LIMIT 1");
        if (anyone.next()) {
            return;
        }
    }
    database.transact([&database] {
        Seeder(database).run();
        seedCatalogue(database);
        seedExtras(database);
    });
}

} // namespace KeloService
