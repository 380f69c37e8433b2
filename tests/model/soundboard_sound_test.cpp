#include "support/KeyTable.hpp"

#include <KeloAPI/model/SoundboardSound.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI::testing {

static_assert(!std::is_default_constructible_v<SoundboardSound>);
static_assert(
    std::is_constructible_v<SoundboardSound, const char*, const char*, const char*, bool>);

TEST(SoundboardSoundParserTest, EveryKeyWithEveryKindOfValue) {
    using S = SoundboardSound;
    Reads sources = identifiers();
    sources[R"("")"] = absent;
    checkParser<SoundboardSoundParser>({
        {"soundId", "8001", "8001", &S::soundId, identifiers(), fails(insufficient)},
        {"sourcePostId", "12", "12", &S::sourcePostId, sources, absent},
        {"name", R"("Bell")", "Bell", &S::name, texts(), ""},
        {"soundUrl", R"("b.m4a")", "b.m4a", &S::soundUrl, urls(), ""},
        {"featured", "true", "true", &S::featured, flags(), "false"},
    });
}

} // namespace KeloAPI::testing
