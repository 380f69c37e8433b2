#include "benchmarks/support/TimelineResponse.hpp"

#include <cstdint>
#include <string_view>
#include <vector>

namespace KeloBenchmark {

namespace {

/// SplitMix64: a few lines that give the same numbers everywhere, unlike the standard's
/// distributions.
class Dice {
public:
    explicit Dice(std::uint64_t seed)
        : _state(seed) {}

    std::uint64_t below(std::uint64_t bound) {
        std::uint64_t z = (_state += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBULL;
        return (z ^ (z >> 31U)) % bound;
    }

private:
    std::uint64_t _state;
};

/// What stands for "#12", twelve characters of a file name as the storage hands them out, or for
/// "3-6", a number between these.
std::string valueOf(const std::string& wanted, Dice& dice) {
    constexpr std::string_view letters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnop";
    if (wanted.front() == '#') {
        std::string token(std::stoul(wanted.substr(1)), ' ');
        for (char& c : token) {
            c = letters[dice.below(letters.size())];
        }
        return token;
    }
    const std::uint64_t low = std::stoull(wanted);
    const std::uint64_t high = std::stoull(wanted.substr(wanted.find('-') + 1));
    return std::to_string(low + dice.below(high - low + 1));
}

/// Fills a form up to its end, or to that of the choice that it stands in: of "<a|b>" one text is
/// taken, which is a form as well; "<3-6>" and "<#12>" become such a value.
std::string filled(std::string_view& form, Dice& dice) {
    std::string text;
    while (!form.empty() && form.front() != '|' && form.front() != '>') {
        if (form.front() != '<') {
            text += form.front();
            form.remove_prefix(1);
            continue;
        }
        std::vector<std::string> choices;
        do {
            form.remove_prefix(1);
            choices.push_back(filled(form, dice));
        } while (form.front() == '|');
        form.remove_prefix(1);
        text +=
            choices.size() == 1 ? valueOf(choices[0], dice) : choices[dice.below(choices.size())];
    }
    return text;
}

/// A record in the service's own order of its keys. Identifiers need the whole 64 bits.
std::string recordForm(const std::string& tag) {
    const std::string id = "<900000000000000000-1400000000000000000>";
    const std::string date = R"("201<3-6>-<10-12>-<10-28>T<10-23>:<10-59>:<10-59>.<100-999>000")";
    const std::string version = "?versionId=<#32>";
    const std::string images = R"("https://images.cdn.kelo.example/)";
    const std::string name =
        R"("<Ana Ruiz|Sam 🎬|DJ Lindqvist|marcus|Zoë K.|김민준|The Trick Lab|Priya>")";
    const std::string word =
        "<when|your|dog|steals|the|last|slice|of|pizza|and|nobody|saw|it|"
        "happen|wait|for|the end|again|loop|this|until|tomorrow|“okay”|naïve> ";
    const std::string words = word + word + word + word;
    const std::string emoji = "<|😂|🔥|🐶|👀|💯|🎉|✨|🏀|🇧🇷|👩‍🚀>";
    const std::string caption = words + "<|" + words + "|" + words + words + "|" + words + words +
                                words + R"(><|||||\"quoted\"\nsecond line >)" + emoji + emoji +
                                "#" + tag;
    const std::string person = R"("userId":)" + id + R"(,"username":)" + name +
                               R"(,"verified":<0|0|0|0|1>,"avatarUrl":)" + images +
                               "avatars/<#34>.jpg" + version + '"';
    const auto reactions = [&](const std::string& key) {
        return R"({"count":<0-89999>,"size":10,"nextPage":null,"records":[<||{)" + person + ",\"" +
               key + "\":" + id + R"(,"created":)" + date + "}>]}";
    };
    const auto video = [&](const std::string& format, const std::string& rest) {
        return R"({"videoUrl":"https://v.cdn.kelo.example/r/videos_)" + format + "/<#36>.mp4" +
               version + R"(","format":")" + format + "\"," + rest + '}';
    };
    const auto entity = [&](const std::string& type, const std::string& rest) {
        return R"({"type":")" + type + R"(","id":)" + id + ',' + rest + '}';
    };
    return R"({"liked":<true|false|false|false>,"foursquareVenueId":null,"private":0,"likes":)" +
           reactions("likeId") +
           R"(,"loops":{"count":<0-39999999>,"velocity":<0-780>.<1-9>546875,"onFire":<true|false>})"
           R"(,"thumbnailUrl":)" +
           images + "thumbs/<#40>.mp4.jpg" + version +
           R"(","explicitContent":0,"vanityUrls":[],"comments":)" + reactions("commentId") +
           R"(,"entities":[)" +
           entity("tag", R"("title":")" + tag + R"(","link":"kelo://tag/)" + tag +
                             R"(","range":[20,30])") +
           "<||," +
           entity("mention", R"("title":)" + name + R"(,"link":"kelo://user-id/)" + id +
                                 R"(","range":[0,4])") +
           R"(>],"videoUrls":[)" + video("h264", R"("rate":2,"id":"r<#6>","default":0)") + ',' +
           video("h264c", R"("rate":1,"id":"r<#6>","default":0)") + ',' +
           video("h264", R"("rate":0,"id":"original","default":1)") + ',' +
           video("webm", R"("rate":3,"id":"r<#6>","default":0)") +
           R"(],"permalinkUrl":"https://kelo.example/v/<#11>","shareUrl":)"
           R"("https://kelo.example/v/<#11>?via=share",)" +
           person + R"(,"description":")" + caption + R"(","tags":[{"tagId":)" + id +
           R"(,"tag":")" + tag + R"("}],"postId":)" + id + R"(,"created":)" + date +
           R"(,"reposts":{"count":<0-29999>,"size":10},"profileBackground":"0x33ccbf","promoted":0)"
           R"(,"loopCount":<0-899999999>,"loopVelocity":<0-3900>.<1-9>796875)"
           R"(<||||,"myRepostId":)" +
           id + R"(><||,"channelId":<1-16>>})";
}

} // namespace

std::string timelineResponse(std::size_t records) {
    Dice dice(20130124);
    std::string text =
        R"({"code":"","data":{"count":4711,"anchorStr":"1134567890123456789","records":[)";
    for (std::size_t i = 0; i < records; ++i) {
        std::string_view tags = "<comedy|dogs|loop|basketball|music|dance|stopmotion|6sekunden>";
        const std::string form = recordForm(filled(tags, dice));
        std::string_view rest = form;
        text += (i == 0 ? "" : ",") + filled(rest, dice);
    }
    text += R"(],"nextPage":2,"previousPage":null,"size":)" + std::to_string(records) +
            R"(,"anchor":1134567890123456789,"backAnchor":"x7fA20"},"success":true,"error":""})";
    text.shrink_to_fit();
    text.reserve(text.size() + 64);
    return text;
}

} // namespace KeloBenchmark
