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

TEST_F(SoundboardEndpointTest, ReadsAllSoundsWithoutParametersWhateverWasSetBefore) {
    endpoint->setParameters({{"page", 2}});
    endpoint->setParameterEncoding(ParameterEncoding::JSON);
    endpoint->setMethod(Method::POST);
    fetch(R"({"data": {"records": [{"soundId": 7, "name": "Airhorn"}, {"soundId": "x"}]}})");
    const auto request = transport->requests().front();
    EXPECT_EQ(request.url->absoluteString(), "https://service.example/soundboard");
    EXPECT_EQ(request.method, Method::GET);
    EXPECT_FALSE(request.body.has_value());
    EXPECT_FALSE(error.has_value());
    ASSERT_EQ(sounds.size(), 2U);
    EXPECT_EQ(sounds[0]->soundId(), "7");
    EXPECT_EQ(sounds[0]->name(), "Airhorn");
    EXPECT_EQ(sounds[1]->soundId(), "x");
}

TEST_F(SoundboardEndpointTest, OneSoundWithoutIdentifierFailsTheCall) {
    fetch(R"({"data": {"records": [{"soundId": "x"}, {"name": "y"}]}})");
    EXPECT_TRUE(sounds.empty());
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->localizedDescription(), "Unable to parse posts from response");
    EXPECT_EQ(error->underlying()->code(), JsonParseError::InsufficientData);
}

TEST_F(SoundboardEndpointTest, UsesTheSessionThatItIsGiven) {
    EXPECT_EQ(endpoint->session(), session);
    EXPECT_EQ(endpoint->path(), "/soundboard");
    const auto other = std::make_shared<Session>(SessionType::UnAuthenticated);
    EXPECT_EQ(SoundboardEndpoint::create(other)->session(), other);
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
