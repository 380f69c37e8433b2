#include "support/MainLoop.hpp"
#include "support/ScriptedSession.hpp"

#include <KeloAPI/endpoints/SoundboardEndpoint.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>

#include <gtest/gtest.h>

namespace KeloAPI {

using fakes::ScriptedAnswer;
using testing::runUntil;

class SoundboardEndpointTest : public testing::ScriptedSessionTest {
protected:
    using Sounds = std::vector<std::shared_ptr<SoundboardSound>>;

    void fetch(const std::string& body) {
        bool done = false;
        transport->answer(ScriptedAnswer::json(body));
        const auto handle = endpoint->fetchSounds([&](Sounds sent, std::optional<Error> sentError) {
            sounds = std::move(sent);
            error = std::move(sentError);
            done = true;
        });
        EXPECT_NE(handle, nullptr);
        EXPECT_TRUE(runUntil([&] { return done; }));
    }

    std::shared_ptr<SoundboardEndpoint> endpoint = SoundboardEndpoint::create(session);
    Sounds sounds;
    std::optional<Error> error;
};

TEST_F(SoundboardEndpointTest, ReadsAllSounds) {
    fetch(R"({"data": {"records": [
        {"soundId": 7, "name": "Airhorn", "soundUrl": "https://cdn.example/a.mp3",
         "featured": true, "sourcePostId": 99},
        {"soundId": "x"}]}})");
    EXPECT_EQ(transport->requests().front().url->absoluteString(),
              "https://service.example/soundboard");
    EXPECT_EQ(transport->requests().front().method, Method::GET);
    EXPECT_FALSE(error.has_value());
    ASSERT_EQ(sounds.size(), 2U);
    EXPECT_EQ(sounds[0]->soundId(), "7");
    EXPECT_EQ(sounds[0]->name(), "Airhorn");
    EXPECT_EQ(sounds[0]->soundUrl().absoluteString(), "https://cdn.example/a.mp3");
    EXPECT_TRUE(sounds[0]->featured());
    EXPECT_EQ(sounds[0]->sourcePostId(), "99");
    EXPECT_EQ(sounds[1]->name(), "");
    EXPECT_EQ(sounds[1]->soundUrl().absoluteString(), "");
    EXPECT_FALSE(sounds[1]->featured());
    EXPECT_EQ(sounds[1]->sourcePostId(), std::nullopt);
}

TEST_F(SoundboardEndpointTest, AnEmptySourceIsNoneAndAnUnusableAddressIsEmpty) {
    fetch(R"({"data": {"records": [{"soundId": "x", "sourcePostId": "", "soundUrl": "no url",
                                    "featured": "yes", "name": 5}]}})");
    ASSERT_EQ(sounds.size(), 1U);
    EXPECT_EQ(sounds[0]->sourcePostId(), std::nullopt);
    EXPECT_EQ(sounds[0]->soundUrl(), URL::empty());
    EXPECT_FALSE(sounds[0]->featured());
    EXPECT_EQ(sounds[0]->name(), "");
}

TEST_F(SoundboardEndpointTest, OneSoundWithoutIdentifierFailsTheCall) {
    fetch(R"({"data": {"records": [{"soundId": "x"}, {"name": "y"}]}})");
    EXPECT_TRUE(sounds.empty());
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->localizedDescription(), "Unable to parse posts from response");
    EXPECT_EQ(error->underlying()->code(), JsonParseError::InsufficientData);
}

TEST_F(SoundboardEndpointTest, AnIdentifierIsTextOrANumber) {
    for (const char* soundId : {"null", "{}", "[]"}) {
        fetch(R"({"data": {"records": [{"soundId": )" + std::string(soundId) + "}]}}");
        EXPECT_TRUE(sounds.empty()) << soundId;
        ASSERT_TRUE(error.has_value()) << soundId;
        EXPECT_EQ(error->underlying()->code(), JsonParseError::InsufficientData) << soundId;
    }
    fetch(R"({"data": {"records": [{"soundId": ""}]}})");
    ASSERT_EQ(sounds.size(), 1U);
    EXPECT_EQ(sounds[0]->soundId(), "");
}

TEST_F(SoundboardEndpointTest, ASourceOfAnotherKindIsNone) {
    fetch(R"({"data": {"records": [{"soundId": "a", "sourcePostId": null},
                                   {"soundId": "b", "sourcePostId": {}},
                                   {"soundId": "c", "sourcePostId": [99]}]}})");
    ASSERT_EQ(sounds.size(), 3U);
    for (const auto& sound : sounds) {
        EXPECT_EQ(sound->sourcePostId(), std::nullopt) << sound->soundId();
    }
}

TEST_F(SoundboardEndpointTest, UsesTheSessionThatItIsGiven) {
    EXPECT_EQ(endpoint->session(), session);
    EXPECT_EQ(endpoint->path(), "/soundboard");
    const auto other = std::make_shared<Session>(SessionType::UnAuthenticated);
    EXPECT_EQ(SoundboardEndpoint::create(other)->session(), other);
}

TEST_F(SoundboardEndpointTest, ReadsWithoutParametersWhateverWasSetBefore) {
    endpoint->setParameters({{"page", 2}});
    endpoint->setParameterEncoding(ParameterEncoding::JSON);
    endpoint->setMethod(Method::POST);
    fetch(R"({"data": {"records": []}})");
    const auto request = transport->requests().back();
    EXPECT_EQ(request.method, Method::GET);
    EXPECT_EQ(request.url->absoluteString(), "https://service.example/soundboard");
    EXPECT_FALSE(request.body.has_value());
}

TEST_F(SoundboardEndpointTest, FeaturedIsWhateverConvertsToABoolean) {
    fetch(R"({"data": {"records": [{"soundId": "a", "featured": 1}, {"soundId": "b", "featured": 0},
                                   {"soundId": "c", "featured": false},
                                   {"soundId": "d", "featured": null}]}})");
    ASSERT_EQ(sounds.size(), 4U);
    EXPECT_TRUE(sounds[0]->featured());
    for (std::size_t i = 1; i < 4; ++i) {
        EXPECT_FALSE(sounds[i]->featured()) << sounds[i]->soundId();
    }
}

TEST_F(SoundboardEndpointTest, AnErrorOfTheServiceComesWithoutSounds) {
    fetch(R"({"error": "no", "code": 12})");
    EXPECT_TRUE(sounds.empty());
    EXPECT_EQ(error->code(), 12);
}

TEST_F(SoundboardEndpointTest, AnEmptyListIsASuccess) {
    fetch(R"({"data": {"records": []}})");
    EXPECT_TRUE(sounds.empty());
    EXPECT_FALSE(error.has_value());
}

} // namespace KeloAPI
