#include "support/Awaited.hpp"
#include "support/RegistrySession.hpp"

#include <KeloAPI/endpoints/TimelineEndpoint.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>

namespace KeloAPI::testing {

const Parameters defaults = {
    {"c_max", 3}, {"c_overflow", "trunc"}, {"l_max", 3}, {"l_overflow", "trunc"}, {"size", 5}};

Parameters defaultsWith(const Parameters& others) {
    Parameters parameters = defaults;
    for (const auto& [name, value] : others) {
        parameters.insert_or_assign(name, value);
    }
    return parameters;
}

class TimelineEndpointTest : public RegistrySessionTest {
protected:
    TimelineResult fetch(const std::string& body) {
        transport->answer(fakes::ScriptedAnswer::json(body));
        return awaited<TimelineResult>([this](auto completion) { endpoint->fetch(completion); });
    }
    TimelineSuccess fetchPage(const std::string& paging) {
        const auto outcome = fetch(R"({"data": {"records": [{"postId": 1}])" + paging + "}}");
        EXPECT_TRUE(outcome.success());
        return outcome.success() ? *outcome.success() : TimelineSuccess{};
    }

    std::shared_ptr<TimelineEndpoint> endpoint = TimelineEndpoint::create("users/42");
};

TEST_F(TimelineEndpointTest, PutsItsPrefixBeforeAPathThatHasItNowhere) {
    EXPECT_EQ(endpoint->path(), "timelines/users/42");
    EXPECT_EQ(TimelineEndpoint::create("timelines/users/42")->path(), "timelines/users/42");
    EXPECT_EQ(TimelineEndpoint::create("x/timelines/y")->path(), "x/timelines/y");
    EXPECT_EQ(TimelineEndpoint::create("timelines")->path(), "timelines/timelines");
    EXPECT_EQ(TimelineEndpoint::create("")->path(), "timelines/");
}

TEST_F(TimelineEndpointTest, StartsWithExactlyTheDefaultParametersUnlessMadeOfASession) {
    EXPECT_EQ(endpoint->parameters(), defaults);
    EXPECT_EQ(endpoint->method(), Method::GET);
    const auto own = TimelineEndpoint::create(session);
    EXPECT_EQ(own->path(), "");
    EXPECT_TRUE(own->parameters().empty());
}

TEST_F(TimelineEndpointTest, NumbersAndAnchorsLeadToOtherPages) {
    struct {
        const char* paging;
        std::optional<Parameters> next;
        std::optional<Parameters> previous;
    } const cases[] = {
        {"", {}, {}},
        {R"(, "nextPage": 2, "size": 20)", Parameters{{"page", 2}, {"size", 20}}, {}},
        {R"(, "anchor": "A", "backAnchor": "B", "size": 10)",
         Parameters{{"anchor", "A"}, {"size", 10}}, Parameters{{"backAnchor", "A"}, {"size", 10}}},
        {R"(, "nextPage": 3, "previousPage": 1, "anchor": 77, "size": 10)",
         Parameters{{"page", 3}, {"anchor", "77"}, {"size", 10}},
         Parameters{{"page", 1}, {"backAnchor", "77"}, {"size", 10}}},
        // A back anchor alone leads nowhere.
        {R"(, "backAnchor": "B", "anchor": "")", {}, {}},
        // That a number is there decides, not which it is.
        {R"(, "nextPage": 0)", Parameters{{"page", 0}, {"size", 0}}, {}},
        {R"(, "nextPage": 2.9)", Parameters{{"page", 2}, {"size", 0}}, {}},
        {R"(, "nextPage": "2")", {}, {}},
        {R"(, "nextPage": null)", {}, {}},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.paging);
        const auto page = fetchPage(one.paging);
        EXPECT_EQ(page.posts.size(), 1U);
        for (const auto& [other, expected] :
             {std::pair(page.nextPage, one.next), std::pair(page.previousPage, one.previous)}) {
            ASSERT_EQ(other != nullptr, expected.has_value());
            if (other) {
                EXPECT_EQ(other->parameters(), defaultsWith(*expected));
                EXPECT_EQ(other->path(), "timelines/users/42");
            }
        }
    }
}

TEST_F(TimelineEndpointTest, WithoutMetadataThereAreNoOtherPages) {
    const auto outcome = fetch(R"({"data": {}})");
    EXPECT_TRUE(outcome.success()->posts.empty());
    EXPECT_EQ(outcome.success()->nextPage, nullptr);
    const auto single = fetch(R"({"data": {"postId": 5, "nextPage": 2}})");
    EXPECT_EQ(single.success()->posts.size(), 1U);
    EXPECT_EQ(single.success()->nextPage, nullptr);
}

TEST_F(TimelineEndpointTest, OwnParametersAreNotCarriedOver) {
    endpoint->setParameters(defaultsWith({{"filter", "new"}, {"size", 50}, {"c_max", 9}}));
    const auto page = fetchPage(R"(, "nextPage": 2, "size": 50)");
    EXPECT_EQ(page.nextPage->parameters(), defaultsWith({{"page", 2}, {"size", 50}}));
}

TEST_F(TimelineEndpointTest, MayBeFetchedAgainAndItsPagesAreIndependent) {
    const auto first = fetchPage(R"(, "nextPage": 2, "size": 1)");
    const auto again = fetchPage(R"(, "nextPage": 2, "size": 1)");
    EXPECT_NE(first.nextPage, again.nextPage);
    EXPECT_EQ(transport->requests().size(), 2U);
    endpoint = first.nextPage;
    fetchPage("");
    EXPECT_NE(transport->requests().back().url->query()->find("page=2"), std::string::npos);
}

TEST_F(TimelineEndpointTest, ARecordWithoutIdentifierStopsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // a forked child has no session of its own
    EXPECT_DEATH(fetch(R"({"data": {"records": [{"description": "x"}]}})"),
                 "contract violated: a post record has no \"postId\"");
}

} // namespace KeloAPI::testing
