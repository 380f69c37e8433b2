#include "benchmarks/support/TimelineResponse.hpp"

#include <nlohmann/json.hpp>

#include <array>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace KeloBenchmark {

namespace {

// The service writes the keys of a record in an order of its own, so this keeps them as inserted.
using Json = nlohmann::ordered_json;

constexpr std::string_view mediaHost = "https://v.cdn.kelo.example/";
constexpr std::string_view imageHost = "https://images.cdn.kelo.example/";

constexpr std::array<std::string_view, 24> words = {
    "when",    "your",  "dog",    "steals", "the",   "last",     "slice",  "of",
    "pizza",   "and",   "nobody", "saw",    "it",    "happen",   "wait",   "for",
    "the end", "again", "loop",   "this",   "until", "tomorrow", "“okay”", "naïve"};
constexpr std::array<std::string_view, 10> emoji = {"😂", "🔥", "🐶", "👀",  "💯",
                                                    "🎉", "✨", "🏀", "🇧🇷", "👩‍🚀"};
constexpr std::array<std::string_view, 8> tagNames = {"comedy", "dogs",  "loop",       "basketball",
                                                      "music",  "dance", "stopmotion", "6sekunden"};
constexpr std::array<std::string_view, 8> names = {"Ana Ruiz", "Sam 🎬",  "DJ Lindqvist",  "marcus",
                                                   "Zoë K.",   "김민준", "The Trick Lab", "Priya"};

/// SplitMix64: a few lines that give the same numbers everywhere, unlike the standard's
/// distributions.
class Dice {
public:
    explicit Dice(std::uint64_t seed)
        : _state(seed) {}

    std::uint64_t number() {
        std::uint64_t z = (_state += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31U);
    }
    std::uint64_t below(std::uint64_t bound) { return number() % bound; }
    std::uint64_t between(std::uint64_t low, std::uint64_t high) {
        return low + below(high - low + 1);
    }
    bool oneIn(std::uint64_t chances) { return below(chances) == 0; }
    template <class List>
    std::string pick(const List& list) {
        return std::string(list[below(list.size())]);
    }
    /// So many characters of a file name as the storage hands them out.
    std::string token(std::size_t length) {
        constexpr std::string_view letters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnop";
        std::string text(length, ' ');
        for (char& c : text) {
            c = letters[below(letters.size())];
        }
        return text;
    }

private:
    std::uint64_t _state;
};

std::string date(Dice& dice) {
    char text[40];
    std::snprintf(text, sizeof text, "201%u-%02u-%02uT%02u:%02u:%02u.%06u",
                  static_cast<unsigned>(dice.between(3, 6)),
                  static_cast<unsigned>(dice.between(1, 12)),
                  static_cast<unsigned>(dice.between(1, 28)), static_cast<unsigned>(dice.below(24)),
                  static_cast<unsigned>(dice.below(60)), static_cast<unsigned>(dice.below(60)),
                  static_cast<unsigned>(dice.below(1000) * 1000));
    return text;
}

/// Identifiers of this service need the whole 64 bits.
std::int64_t identifier(Dice& dice) {
    return static_cast<std::int64_t>(dice.between(900000000000000000, 1400000000000000000));
}

std::string avatarUrl(Dice& dice) {
    return std::string(imageHost) + "avatars/" + dice.token(34) +
           ".jpg?versionId=" + dice.token(32);
}

std::string caption(Dice& dice, const std::string& tag) {
    std::string text;
    for (std::uint64_t left = dice.between(4, 16); left > 0; --left) {
        text += dice.pick(words) + ' ';
    }
    if (dice.oneIn(6)) {
        text += "\"quoted\"\nsecond line ";
    }
    for (std::uint64_t left = dice.below(4); left > 0; --left) {
        text += dice.pick(emoji);
    }
    return text + " #" + tag;
}

Json videoUrls(Dice& dice) {
    struct Rendition {
        const char* format;
        int rate;
    };
    constexpr std::array<Rendition, 4> renditions = {
        {{"h264", 2}, {"h264c", 1}, {"h264", 0}, {"webm", 3}}};
    Json list = Json::array();
    for (const Rendition& rendition : renditions) {
        list.push_back({{"videoUrl", std::string(mediaHost) + "r/videos_" + rendition.format + "/" +
                                         dice.token(36) + ".mp4?versionId=" + dice.token(32)},
                        {"format", rendition.format},
                        {"rate", rendition.rate},
                        {"id", rendition.rate == 0 ? "original" : "r" + dice.token(6)},
                        {"default", rendition.rate == 0 ? 1 : 0}});
    }
    return list;
}

Json person(Dice& dice) {
    return {{"userId", identifier(dice)},
            {"username", dice.pick(names)},
            {"verified", dice.oneIn(5) ? 1 : 0},
            {"avatarUrl", avatarUrl(dice)}};
}

Json reactions(Dice& dice, const char* idKey) {
    Json records = Json::array();
    if (dice.oneIn(3)) {
        Json record = person(dice);
        record[idKey] = identifier(dice);
        record["created"] = date(dice);
        records.push_back(std::move(record));
    }
    return {{"count", dice.below(90000)},
            {"size", 10},
            {"nextPage", nullptr},
            {"records", std::move(records)}};
}

Json entities(Dice& dice, const std::string& tag, std::size_t end) {
    Json list = Json::array();
    list.push_back({{"type", "tag"},
                    {"id", identifier(dice)},
                    {"title", tag},
                    {"link", "kelo://tag/" + tag},
                    {"range", {end - tag.size() - 1, end}}});
    if (dice.oneIn(3)) {
        list.push_back({{"type", "mention"},
                        {"id", identifier(dice)},
                        {"title", dice.pick(names)},
                        {"link", "kelo://user-id/" + std::to_string(identifier(dice))},
                        {"range", {0, 4}}});
    }
    return list;
}

Json record(Dice& dice) {
    const std::string tag = dice.pick(tagNames);
    const std::string text = caption(dice, tag);
    const std::string permalink = dice.token(11);
    Json post = {{"liked", dice.oneIn(4)},
                 {"foursquareVenueId", nullptr},
                 {"userId", identifier(dice)},
                 {"private", 0},
                 {"likes", reactions(dice, "likeId")},
                 {"loops",
                  {{"count", dice.below(40000000)},
                   {"velocity", static_cast<double>(dice.below(100000)) / 128.0},
                   {"onFire", dice.oneIn(9)}}},
                 {"thumbnailUrl", std::string(imageHost) + "thumbs/" + dice.token(40) +
                                      ".mp4.jpg?versionId=" + dice.token(32)},
                 {"explicitContent", 0},
                 {"vanityUrls", Json::array()},
                 {"verified", dice.oneIn(5) ? 1 : 0},
                 {"avatarUrl", avatarUrl(dice)},
                 {"comments", reactions(dice, "commentId")},
                 {"entities", entities(dice, tag, text.size())},
                 {"videoUrls", videoUrls(dice)},
                 {"permalinkUrl", "https://kelo.example/v/" + permalink},
                 {"shareUrl", "https://kelo.example/v/" + permalink + "?via=share"},
                 {"username", dice.pick(names)},
                 {"description", text},
                 {"tags", Json::array({{{"tagId", identifier(dice)}, {"tag", tag}}})},
                 {"postId", identifier(dice)},
                 {"created", date(dice)},
                 {"reposts", {{"count", dice.below(30000)}, {"size", 10}}},
                 {"profileBackground", "0x33ccbf"},
                 {"promoted", 0},
                 {"loopCount", dice.below(900000000)},
                 {"loopVelocity", static_cast<double>(dice.below(1000000)) / 256.0}};
    if (dice.oneIn(5)) {
        post["myRepostId"] = identifier(dice);
    }
    if (dice.oneIn(3)) {
        post["channelId"] = dice.between(1, 16);
    }
    return post;
}

} // namespace

std::string timelineResponse(std::size_t records) {
    Dice dice(20130124);
    Json list = Json::array();
    for (std::size_t i = 0; i < records; ++i) {
        list.push_back(record(dice));
    }
    const Json response = {{"code", ""},
                           {"data",
                            {{"count", 4711},
                             {"anchorStr", "1134567890123456789"},
                             {"records", std::move(list)},
                             {"nextPage", 2},
                             {"previousPage", nullptr},
                             {"size", records},
                             {"anchor", 1134567890123456789},
                             {"backAnchor", "x7fA20"}}},
                           {"success", true},
                           {"error", ""}};
    std::string text = response.dump();
    constexpr std::size_t spare = 64;
    text.reserve(text.size() + spare);
    return text;
}

} // namespace KeloBenchmark
