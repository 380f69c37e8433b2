#include "support/EndpointMaking.hpp"
#include "support/MainLoop.hpp"
#include "support/RegistrySession.hpp"

#include <KeloAPI/endpoints/LoopsEndpoint.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>

#include <gtest/gtest.h>

namespace KeloAPI {

using fakes::ScriptedAnswer;
using testing::runUntil;

class LoopsEndpointTest : public testing::RegistrySessionTest {
protected:
    LoopsEndpointTest() { post.postId = "1234567890"; }

    /// The one record of a body; checks what surrounds it.
    static std::map<std::string, std::string> recordOf(const URLRequest& request) {
        const auto document = JsonDocument::parse(std::string(request.body->text()));
        const auto root = *document.value().root().object();
        EXPECT_EQ(root.size(), 1U);
        const auto loops = *root["loops"].objects();
        EXPECT_EQ(loops.size(), 1U);
        std::map<std::string, std::string> record;
        for (const auto& [key, value] : *loops.begin()) {
            record.emplace(key, value.description());
        }
        return record;
    }

    std::shared_ptr<LoopsEndpoint> endpoint = LoopsEndpoint::create();
    KLWatchPost post;
};

static_assert(!testing::createdWith<LoopsEndpoint, std::shared_ptr<Session>>);
static_assert(testing::createdWith<LoopsEndpoint>);

TEST_F(LoopsEndpointTest, IsSetUpFromTheStart) {
    EXPECT_EQ(endpoint->path(), "loops");
    EXPECT_EQ(endpoint->method(), Method::POST);
    EXPECT_EQ(endpoint->parameterEncoding(), ParameterEncoding::JSON);
    EXPECT_TRUE(endpoint->parameters().empty());
    session->setDelegate(nullptr);
    EXPECT_EQ(LoopsEndpoint::create()->session(), session);
    EXPECT_EQ(session->delegate(), delegate);
}

TEST_F(LoopsEndpointTest, APostWithoutIdentifierSendsNothing) {
    post.postId.reset();
    endpoint->submit(5, post);
    EXPECT_TRUE(transport->requests().empty());
    passThrough();
    EXPECT_TRUE(lines.empty());
}

TEST_F(LoopsEndpointTest, AReportOutlivesItsEndpoint) {
    endpoint->submit(5, post);
    const std::weak_ptr<LoopsEndpoint> watched = endpoint;
    endpoint.reset();
    transport->answer(ScriptedAnswer::json(R"({"data": {}})"));
    ASSERT_TRUE(runUntil([&] { return lines.size() == 1; }));
    EXPECT_EQ(lines.back(), "Submitted loops with error: nil");
    EXPECT_TRUE(runUntil([&] { return watched.expired(); }));
}

TEST_F(LoopsEndpointTest, EachCallIsARequestOfItsOwnWithCountAndIdentifierAsGiven) {
    std::size_t calls = 0;
    for (const char* id : {"1234567890", "2", ""}) {
        post.postId = id;
        for (const std::int64_t count : {std::int64_t{0}, std::int64_t{-3}, INT64_MAX, INT64_MIN}) {
            endpoint->submit(count, post);
            EXPECT_EQ(transport->requests().size(), ++calls);
            EXPECT_EQ(recordOf(lastRequest()).at("count"), std::to_string(count));
            EXPECT_EQ(recordOf(lastRequest()).at("postId"), id);
        }
    }
}

TEST_F(LoopsEndpointTest, WritesALineOnSuccessAndOnFailure) {
    transport->answer(ScriptedAnswer::json(R"({"error": "no", "code": 100})"));
    endpoint->submit(1, post);
    ASSERT_TRUE(runUntil([&] { return lines.size() == 1; }));
    EXPECT_EQ(lines.back(), "Submitted loops with error: nil");
    transport->answer(ScriptedAnswer::failure(Error("KeloAPI.HTTP", 5)));
    endpoint->submit(1, post);
    ASSERT_TRUE(runUntil([&] { return lines.size() == 2; }));
    EXPECT_TRUE(lines.back().starts_with("Submitted loops with error: KeloAPI.HTTP 5"));
    EXPECT_EQ(delegate->reauthCount, 0);
}

} // namespace KeloAPI
