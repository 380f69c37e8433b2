#include "service/seed/Catalogue.hpp"

#include "service/seed/Seed.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace KeloService {
namespace {

struct LongformSeed {
    std::string_view longformId;
    double duration;
    double aspectRatio;
    std::int64_t viewCount;
};

constexpr LongformSeed longforms[] = {
    {"lf-harbour-dawn", 92.5, 1.7777777777777777, 48211}, {"lf-clay-orchestra", 140, 1, 7310},
    {"lf-night-market", 61.25, 0.5625, 1250733},          {"lf-skate-diary-3", 118.04, 1, 902},
    {"lf-sheepdog-final", 133.9, 1.3333333333333333, 56}, {"lf-unseen", 75, 1, 0},
};

struct SoundSeed {
    std::string_view name;
    bool featured;
    /// Number of the post it was taken from, -1 for none.
    std::int64_t sourcePost;
};

constexpr SoundSeed sounds[] = {
    {"Air horn", true, -1},
    {"Record scratch", true, -1},
    {"Sad trombone", false, -1},
    {"Cat, offended", true, 12},
    {"Crowd goes \"oooh\"", false, 77},
    {"Kettle at full boil", false, 301},
    {"Drum roll 🥁", true, -1},
    {"Rain on a tin roof", false, -1},
    {"Ding", false, -1},
    {"¡Vámonos!", false, 640},
    {"雷", false, 918},
    {"Tape rewind", true, -1},
    {"Sheep, distant", false, 1203},
    {"Six seconds of nothing", false, -1},
};
constexpr std::int64_t firstSoundId = 8001;

std::optional<std::int64_t> sourcePostId(const SoundSeed& sound) {
    std::optional<std::int64_t> postId;
    if (sound.sourcePost >= 0) {
        postId.emplace(firstSeededPostId + sound.sourcePost * seededPostIdStep);
    }
    return postId;
}

} // namespace

void seedCatalogue(Database& database) {
    for (const LongformSeed& longform : longforms) {
        const std::string place = "/media/longforms/" + std::string(longform.longformId);
        database.query("INSERT INTO longforms VALUES (?1, ?2, ?3, ?4, ?5, ?6)")
            .bind(longform.longformId, place + ".mp4", place + ".jpg", longform.duration,
                  longform.aspectRatio, longform.viewCount)
            .run();
    }
    std::int64_t soundId = firstSoundId;
    for (const SoundSeed& sound : sounds) {
        database.query("INSERT INTO sounds VALUES (?1, ?2, ?3, ?4, ?5)")
            .bind(soundId, sound.name, "/media/sounds/" + std::to_string(soundId) + ".m4a",
                  sound.featured, sourcePostId(sound))
            .run();
        ++soundId;
    }
}

} // namespace KeloService
