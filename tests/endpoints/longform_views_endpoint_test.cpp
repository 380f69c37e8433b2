#include "support/EndpointMaking.hpp"
#include "support/KeyTable.hpp"
#include "support/MainLoop.hpp"
#include "support/RegistrySession.hpp"

#include <KeloAPI/endpoints/internal/decimalText.hpp>
#include <KeloAPI/endpoints/LongformViewsEndpoint.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/model/KLLongformViews.hpp>

#include <gtest/gtest.h>

#include <charconv>
#include <random>
#include <type_traits>

namespace KeloAPI {

using fakes::ScriptedAnswer;
using testing::runUntil;

class LongformViewsEndpointTest : public testing::RegistrySessionTest {
protected:
    void fetch(const std::string& body) {
        bool done = false;
        transport->answer(ScriptedAnswer::json(body));
        endpoint->fetchViews(
            [&](std::shared_ptr<KLLongformViews> sent, std::optional<Error> sentError) {
                views = std::move(sent);
                error = std::move(sentError);
                done = true;
            });
        EXPECT_TRUE(runUntil([&] { return done; }));
    }
    void submit(const std::string& body) {
        bool done = false;
        transport->answer(ScriptedAnswer::json(body));
        endpoint->submitView([&](std::optional<Error> sentError) {
            error = std::move(sentError);
            done = true;
        });
        EXPECT_TRUE(runUntil([&] { return done; }));
    }

    std::shared_ptr<LongformViewsEndpoint> endpoint = LongformViewsEndpoint::create("abc");
    std::shared_ptr<KLLongformViews> views;
    std::optional<Error> error;
};

static_assert(!std::is_default_constructible_v<KLLongformViews>);
static_assert(std::is_constructible_v<KLLongformViews, const char*, int>);
static_assert(!testing::createdWith<LongformViewsEndpoint, std::shared_ptr<Session>>);
static_assert(testing::createdWith<LongformViewsEndpoint, const char*>);

TEST_F(LongformViewsEndpointTest, TheFirstItemCountsAndNoneIsNoError) {
    fetch(R"({"data": {"records": [{"longformId": "a", "count": 1},
                                   {"longformId": "b", "count": 2}]}})");
    ASSERT_NE(views, nullptr);
    EXPECT_EQ(views->longformId(), "a");
    fetch(R"({"data": {}})");
    EXPECT_EQ(views, nullptr);
    EXPECT_FALSE(error.has_value());
    fetch(R"({"data": {}, "error": "no", "code": 3})");
    EXPECT_EQ(views, nullptr);
    EXPECT_EQ(error->code(), 3);
}

TEST_F(LongformViewsEndpointTest, UsesTheSignedInSessionWithTheDefaultDelegate) {
    session->setDelegate(nullptr);
    EXPECT_EQ(LongformViewsEndpoint::create("abc")->session(), session);
    EXPECT_EQ(session->delegate(), delegate);
}

TEST_F(LongformViewsEndpointTest, EitherCallCanBeCancelledByItsHandle) {
    std::vector<std::int64_t> codes;
    const auto note = [&](const std::optional<Error>& sentError) {
        codes.push_back(sentError ? sentError->code() : 0);
    };
    const auto reading = endpoint->fetchViews(
        [&](const std::shared_ptr<KLLongformViews>& sent, const std::optional<Error>& sentError) {
            EXPECT_EQ(sent, nullptr);
            note(sentError);
        });
    const auto reporting = endpoint->submitView(note);
    reading->cancel();
    reporting->cancel();
    ASSERT_TRUE(runUntil([&] { return codes.size() == 2; }));
    const auto cancelled = static_cast<std::int64_t>(HTTPErrorCode::Cancelled);
    EXPECT_EQ(codes, (std::vector<std::int64_t>{cancelled, cancelled}));
}

TEST_F(LongformViewsEndpointTest, WhatTheAnswerToAReportHoldsIsIgnored) {
    submit(R"({"data": {"longformId": 5, "count": "x"}})");
    EXPECT_FALSE(error.has_value());
    submit(R"({"data": 5})");
    EXPECT_EQ(error->localizedDescription(), "Malformed data section in response");
}

TEST(LongformViewsParser, EveryKeyWithEveryKindOfValue) {
    using V = KLLongformViews;
    testing::Reads counts = testing::integers();
    counts["9223372036854775807"] = "9223372036854775807";
    const auto required = testing::fails(testing::insufficient);
    testing::checkParser<KLLongformViewsParser>(
        {{"longformId", R"("abc")", "abc", &V::longformId, testing::texts(), required},
         {"count", "12.9", "12", &V::count, counts, required}});
}

TEST(DecimalText, HasAPointAndNoExponent) {
    EXPECT_EQ(decimalText(1447545600.25), "1447545600.25");
    EXPECT_EQ(decimalText(1447545600), "1447545600.0");
    EXPECT_EQ(decimalText(0), "0.0");
    EXPECT_EQ(decimalText(1e22), "10000000000000000000000.0");
    EXPECT_EQ(decimalText(1e-7), "0.0000001");
    EXPECT_EQ(decimalText(-0.5), "-0.5");
}

TEST(DecimalText, ReadsBackAsTheSameNumber) {
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> instants(0, 4e9);
    for (int i = 0; i < 10000; ++i) {
        const double value = instants(random);
        const std::string text = decimalText(value);
        double back = 0;
        std::from_chars(text.data(), text.data() + text.size(), back);
        ASSERT_EQ(back, value) << text;
    }
}

} // namespace KeloAPI
