#include "support/KeyTable.hpp"

#include <KeloAPI/model/SoundboardSound.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI {

using testing::absent;
using testing::fails;
using testing::KeyTable;

static_assert(!std::is_default_constructible_v<SoundboardSound>);
static_assert(
    std::is_constructible_v<SoundboardSound, const char*, const char*, const char*, bool>);

TEST(SoundboardSoundParserTest, EveryKeyWithEveryKindOfValue) {
    const auto showing = [](auto member) { return testing::showing<SoundboardSound>(member); };
    testing::Reads sources = testing::identifiers();
    sources[R"("")"] = absent;
    const KeyTable<SoundboardSound>::Rules rules = {
        {"soundId", "8001", "8001", showing(&SoundboardSound::soundId), testing::identifiers(),
         fails(JsonParseError::InsufficientData)},
        {"sourcePostId", "12", "12", showing(&SoundboardSound::sourcePostId), sources, absent},
        {"name", R"("Bell")", "Bell", showing(&SoundboardSound::name), testing::texts(), ""},
        {"soundUrl", R"("https://s.example/b.m4a")", "https://s.example/b.m4a",
         showing(&SoundboardSound::soundUrl), testing::urls(), ""},
        {"featured", "true", "true", showing(&SoundboardSound::featured), testing::flags(),
         "false"},
    };
    KeyTable<SoundboardSound>(testing::parseWith<SoundboardSoundParser>(), rules).check();
}

} // namespace KeloAPI
