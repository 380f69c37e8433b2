#include "service/seed/Extras.hpp"

#include "service/seed/People.hpp"
#include "service/seed/Places.hpp"
#include "service/seed/Random.hpp"
#include "service/seed/Seed.hpp"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace KeloService {
namespace {

constexpr int iconSide = 32;
constexpr int bylineIconSide = 40;
constexpr int artSide = 300;
constexpr std::int64_t firstImageSeed = 70001;
constexpr std::int64_t firstTrackId = 3001;

struct TrackSeed {
    std::string_view name;
    std::string_view artist;
    /// Its number in the music store, 0 where it is not sold.
    std::int64_t storeId;
    bool hasTimeline;
};

constexpr TrackSeed tracks[] = {
    {"Six Seconds", "The Short Attention", 909253, true},
    {"Escada Rolante", "Banda do Poço", 1440833, false},
    {"Tin Roof, Heavy Rain", "Freya & the Wheels", 0, false},
    {"手をたたく", "夜の線路", 5500127, true},
    {"Kitchen Drums, Vol. 2", "Oskar", 0, true},
    {"Loop de Loop 🎢", "DJ Ampersand", 18446744073, false},
};

struct BylineSeed {
    std::string_view icon;
    std::string_view text;
};

constexpr BylineSeed picked = {"/media/icons/byline-pick.png", "🏆 Editors’ pick in "};
constexpr BylineSeed fansOf = {"/media/icons/byline-fan.png", "👀 Looped again and again by "};
constexpr BylineSeed onFireByline = {"/media/icons/byline-fire.png", "🔥 On fire right now"};

std::optional<std::string_view> unlessEmpty(std::string_view text) {
    return text.empty() ? std::nullopt : std::optional(text);
}

std::int64_t codePoints(std::string_view text) {
    return std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
    });
}

std::string iconPrefix(const CategorySeed& category) {
    return "/media/icons/category-" + std::string(category.categoryId) + "_";
}

std::string artPath(std::int64_t trackId) {
    return "/media/albums/" + std::to_string(trackId) + ".png";
}

/// A post as far as its byline is concerned.
struct Subject {
    std::int64_t postId = 0;
    std::optional<std::int64_t> channelId;
    std::string channelName;
    bool isPick = false;
    bool isOnFire = false;
};

class ExtrasSeeder {
public:
    explicit ExtrasSeeder(Database& database)
        : database_(database) {}

    void run() {
        addPlaces();
        addTracks();
        for (const BylineSeed& byline : {picked, fansOf, onFireByline}) {
            addImage(std::string(byline.icon), bylineIconSide);
        }
        for (const Subject& post : posts()) {
            addExtras(post.postId);
            addByline(post);
        }
        database_.execute("UPDATE tags SET postCount = "
                          "(SELECT count(*) FROM postTags WHERE postTags.tagId = tags.tagId)");
    }

private:
    void addPlaces();
    void addTracks();
    void addImage(const std::string& path, int side);
    std::vector<Subject> posts();
    void addExtras(std::int64_t postId);
    void addByline(const Subject& post);
    void addByline(std::int64_t postId, const BylineSeed& byline, std::string_view type,
                   std::int64_t targetId, const std::string& title);

    Database& database_;
    /// One of its own: what posts say does not depend on what is beside them.
    Random random_{20160302};
    std::int64_t imageSeed_ = firstImageSeed;
};

void ExtrasSeeder::addPlaces() {
    for (const CategorySeed& category : categories()) {
        const std::string prefix = iconPrefix(category);
        database_.query("INSERT INTO venueCategories VALUES (?1, ?2, ?3, '.png')")
            .bind(category.categoryId, category.shortName, prefix)
            .run();
        addImage(prefix + std::to_string(iconSide) + ".png", iconSide);
    }
    for (const PlaceSeed& place : places()) {
        const auto category = place.category < categories().size()
                                  ? std::optional(categories()[place.category].categoryId)
                                  : std::nullopt;
        database_.query("INSERT INTO venues VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)")
            .bind(place.venueId, place.name, unlessEmpty(place.address), place.city,
                  unlessEmpty(place.state), place.country, place.latitude, place.longitude,
                  category)
            .run();
    }
}

void ExtrasSeeder::addTracks() {
    std::int64_t trackId = firstTrackId;
    for (const TrackSeed& track : tracks) {
        const bool sold = track.storeId != 0;
        database_.query("INSERT INTO tracks VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)")
            .bind(trackId, track.name, track.artist,
                  sold ? std::optional(track.storeId) : std::nullopt,
                  sold ? std::optional(std::string_view("kelo-10")) : std::nullopt,
                  track.hasTimeline, sold ? std::optional(artPath(trackId)) : std::nullopt)
            .run();
        if (sold) {
            addImage(artPath(trackId), artSide);
        }
        ++trackId;
    }
}

void ExtrasSeeder::addImage(const std::string& path, int side) {
    database_.query("INSERT INTO images VALUES (?1, ?2, ?3)").bind(path, side, imageSeed_++).run();
}

std::vector<Subject> ExtrasSeeder::posts() {
    std::vector<Subject> posts;
    Query query = database_.query("SELECT p.postId, p.channelId, c.name, p.pickRank, p.onFire "
                                  "FROM posts p LEFT JOIN channels c USING (channelId) "
                                  "ORDER BY p.postId");
    while (query.next()) {
        const auto channelId = query.isNull(1) ? std::nullopt : std::optional(query.integer(1));
        posts.push_back(
            {query.integer(0), channelId, query.text(2), !query.isNull(3), query.boolean(4)});
    }
    return posts;
}

void ExtrasSeeder::addExtras(std::int64_t postId) {
    std::optional<std::string_view> venueId;
    if (random_.oneIn(3)) {
        venueId = random_.oneOf(places()).venueId;
    }
    std::optional<std::int64_t> trackId;
    if (random_.oneIn(4)) {
        trackId = firstTrackId + random_.below(std::ssize(tracks));
    }
    if (venueId || trackId) {
        database_.query("INSERT INTO postExtras VALUES (?1, ?2, ?3)")
            .bind(postId, venueId, trackId)
            .run();
    }
}

void ExtrasSeeder::addByline(const Subject& post) {
    const bool hasFan = random_.oneIn(10);
    const std::int64_t fan = random_.below(std::ssize(people()));
    if (post.isPick && post.channelId) {
        addByline(post.postId, picked, "channel", *post.channelId, post.channelName);
    } else if (post.isOnFire) {
        database_.query("INSERT INTO bylines (postId, body, iconPath) VALUES (?1, ?2, ?3)")
            .bind(post.postId, onFireByline.text, onFireByline.icon)
            .run();
    } else if (hasFan) {
        const Person& person = people()[static_cast<std::size_t>(fan)];
        addByline(post.postId, fansOf, "mention", firstSeededUserId + fan,
                  std::string(person.username));
    }
}

void ExtrasSeeder::addByline(std::int64_t postId, const BylineSeed& byline, std::string_view type,
                             std::int64_t targetId, const std::string& title) {
    const std::int64_t start = codePoints(byline.text);
    database_.query("INSERT INTO bylines VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)")
        .bind(postId, std::string(byline.text) + title, byline.icon, start,
              start + codePoints(title), type, targetId, title)
        .run();
}

} // namespace

void seedExtras(Database& database) {
    ExtrasSeeder(database).run();
}

} // namespace KeloService
