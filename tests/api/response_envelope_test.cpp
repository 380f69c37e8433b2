#include <KeloAPI/api/ResponseEnvelope.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPI/parsing/KLClosureParser.hpp>
#include <KeloAPI/parsing/ParserError.hpp>
#include <KeloAPI/Settings.hpp>

#include <gtest/gtest.h>

#include <stdexcept>

namespace KeloAPI {

namespace {

using Read = ModelResponse<LoopData>;

Read read(const std::shared_ptr<const JsonParser<LoopData>>& parser, const std::string& body,
          const std::optional<Error>& error = std::nullopt) {
    const URLRequest request;
    const std::optional<HTTPResponse> head;
    return keloModelResponseSerializer({request, head, body, error}, *parser);
}

/// Reads an answer whose records are loop counters.
Read read(const std::string& body) {
    return read(std::make_shared<LoopDataParser>(), body);
}

void expectEnvelopeError(const Read& answer, const std::string& message) {
    EXPECT_TRUE(answer.items.empty());
    EXPECT_FALSE(answer.metadata.has_value());
    ASSERT_TRUE(answer.error.has_value());
    EXPECT_EQ(answer.error->domain(), Settings::errorDomain);
    EXPECT_EQ(answer.error->code(), -1);
    EXPECT_EQ(answer.error->localizedDescription(), message);
    EXPECT_FALSE(answer.error->integer(KLAPIStatusCodeKey).has_value());
}

} // namespace

TEST(ResponseEnvelope, KeysEqualTheirNames) {
    EXPECT_EQ(KLAPIStatusCodeKey, "KLAPIStatusCodeKey");
    EXPECT_EQ(KLCaptchaUrlKey, "KLCaptchaUrlKey");
}

TEST(ResponseEnvelope, PassesTheHTTPLayersErrorOnUnchanged) {
    const auto failed = httpError(HTTPErrorCode::TimedOut, "too slow");
    const Read answer =
        read(std::make_shared<LoopDataParser>(), R"({"data": {}})", std::optional(failed));
    EXPECT_EQ(answer.error, failed);
}

TEST(ResponseEnvelope, AnEmptyBodyAndMalformedJsonAreTheHTTPLayersErrors) {
    EXPECT_TRUE(isHTTPError(*read("").error, HTTPErrorCode::EmptyBody));
    const Read malformed = read("{");
    EXPECT_TRUE(isHTTPError(*malformed.error, HTTPErrorCode::BadJson));
    EXPECT_TRUE(malformed.error->underlying().has_value());
}

TEST(ResponseEnvelope, ANumberOfAnySizeLosesNoRecord) {
    for (const char* number : {"18446744073709551616", "-9223372036854775809", "1e400"}) {
        const Read answer =
            read(std::string(R"({"unread": )") + number + R"(, "data": {"count": )" + number +
                 R"(, "records": [{"count": 1, "velocity": 2},
            {"count": 3, "velocity": )" +
                 number + "}]}}");
        EXPECT_FALSE(answer.error) << number;
        ASSERT_EQ(answer.items.size(), 2U) << number;
        EXPECT_EQ(answer.items[0]->count, Number::of(1));
        EXPECT_EQ(answer.items[1]->velocity.doubleValue() < 0, *number == '-');
    }
}

TEST(ResponseEnvelope, WithoutADataObjectIsAnErrorOfItsOwn) {
    for (const char* body : {"[]", "[{\"data\":{}}]", "1", "\"text\"", "null", "true"}) {
        expectEnvelopeError(read(body), "Data section in response is missing");
    }
    for (const char* body : {"{}", R"({"data": null})", R"({"data": []})", R"({"data": "x"})",
                             R"({"data": 1})", R"({"error": "", "data": [{}]})"}) {
        expectEnvelopeError(read(body), "Malformed data section in response");
    }
}

TEST(ResponseEnvelope, ANonEmptyErrorTextIsAServiceError) {
    const std::pair<const char*, std::int64_t> table[] = {
        {R"(, "code": 602, "data": {})", 602},
        {"", -1},
        {R"(, "code": "7")", -1},
        {R"(, "code": null)", -1},
        {R"(, "code": {})", -1},
    };
    for (const auto& [rest, code] : table) {
        const Read answer = read(R"({"error": "no such post")" + std::string(rest) + "}");
        ASSERT_TRUE(answer.error.has_value()) << rest;
        EXPECT_EQ(answer.error->domain(), Settings::errorDomain);
        EXPECT_EQ(answer.error->code(), code) << rest;
        EXPECT_EQ(answer.error->localizedDescription(), "no such post");
        EXPECT_EQ(answer.error->integer(KLAPIStatusCodeKey), code) << rest;
        EXPECT_FALSE(answer.error->url(KLCaptchaUrlKey).has_value());
        EXPECT_TRUE(answer.items.empty());
    }
}

TEST(ResponseEnvelope, AnErrorThatIsEmptyOrNoTextIsIgnored) {
    for (const char* error : {R"("")", "5", "null", "{}", "[]", "true"}) {
        const Read answer =
            read(std::string(R"({"code": 100, "data": {"records": []}, "error": )") + error + "}");
        EXPECT_FALSE(answer.error.has_value()) << error;
        EXPECT_TRUE(answer.metadata.has_value()) << error;
    }
}

TEST(ResponseEnvelope, OnlyACaptchaErrorCarriesAURL) {
    const std::pair<const char*, std::optional<std::string>> table[] = {
        {R"(419, "data": "https://service.example/c?t=1")", "https://service.example/c?t=1"},
        {R"(419, "data": "not a url")", {}},
        {R"(419, "data": "")", {}},
        {R"(419, "data": {})", {}},
        {R"(419, "data": 5)", {}},
        {R"(419, "data": null)", {}},
        {R"(100, "data": "https://service.example/")", {}},
    };
    for (const auto& [rest, expected] : table) {
        const Read answer = read(R"({"error": "no", "code": )" + std::string(rest) + "}");
        EXPECT_EQ(answer.error->code(), *rest == '4' ? 419 : 100) << rest;
        const auto url = answer.error->url(KLCaptchaUrlKey);
        EXPECT_EQ(url ? std::optional(url->absoluteString()) : std::nullopt, expected) << rest;
    }
}

TEST(ResponseEnvelope, EmptyDataIsAnEmptySuccessWithoutMetadata) {
    const Read answer = read(R"({"data": {}})");
    EXPECT_FALSE(answer.error.has_value());
    EXPECT_TRUE(answer.items.empty());
    EXPECT_FALSE(answer.metadata.has_value());
}

TEST(ResponseEnvelope, RecordsAreParsedInOrderAndHaveMetadata) {
    const std::pair<const char*, std::vector<std::string>> table[] = {
        {"", {}},
        {R"({"count": 1, "velocity": 0}, {"count": 2, "velocity": 0})", {"1", "2"}},
    };
    for (const auto& [records, counts] : table) {
        const Read answer = read(R"({"data": {"count": 7, "nextPage": 2, "records": [)" +
                                 std::string(records) + "]}}");
        EXPECT_FALSE(answer.error.has_value());
        std::vector<std::string> found;
        for (const auto& item : answer.items) {
            found.push_back(item->count.stringValue());
        }
        EXPECT_EQ(found, counts);
        ASSERT_TRUE(answer.metadata.has_value());
        EXPECT_EQ(answer.metadata->count(), 7);
        EXPECT_EQ(answer.metadata->nextPage(), 2);
    }
}

TEST(ResponseEnvelope, OneBadRecordFailsTheWholeAnswer) {
    const Read answer =
        read(R"({"data": {"records": [{"count": 1, "velocity": 0}, {"count": 2}, {}]}})");
    expectEnvelopeError(answer, "Unable to parse posts from response");
    const auto& cause = answer.error->underlying();
    ASSERT_TRUE(cause.has_value());
    EXPECT_EQ(cause->domain(), JsonParseError::domain);
    EXPECT_EQ(cause->code(), JsonParseError::InsufficientData);
    EXPECT_EQ(cause->integer("record"), 1);
    EXPECT_EQ(std::get<std::string>(cause->userInfo().at("key")), "velocity");
}

TEST(ResponseEnvelope, RecordsThatAreNoListOfObjectsMakeTheDataOneItem) {
    for (const char* records : {"{}", "5", "null", "[1]", "[{}, 1]", R"("x")"}) {
        const Read answer =
            read(std::string(R"({"data": {"count": 4, "velocity": 1, "nextPage": 2, "records": )") +
                 records + "}}");
        EXPECT_FALSE(answer.error.has_value()) << records;
        ASSERT_EQ(answer.items.size(), 1U) << records;
        EXPECT_EQ(answer.items[0]->count, Number::of(4)) << records;
        EXPECT_FALSE(answer.metadata.has_value()) << records;
    }
}

TEST(ResponseEnvelope, ASingleObjectThatFailsIsAnError) {
    const Read answer = read(R"({"data": {"other": 1}})");
    expectEnvelopeError(answer, "Unable to parse posts from response");
    EXPECT_FALSE(answer.error->underlying()->integer("record").has_value());
}

TEST(ResponseEnvelope, WhateverAParserThrowsIsTheSameError) {
    const std::vector<KLClosureParser<LoopData>::Parser> closures = {
        [](const JsonObject&) -> std::shared_ptr<LoopData> { throw std::runtime_error("odd"); },
        [](const JsonObject&) -> std::shared_ptr<LoopData> { throw 5; },
        [](const JsonObject&) -> std::shared_ptr<LoopData> { return nullptr; }};
    for (const auto& closure : closures) {
        expectEnvelopeError(read(std::make_shared<KLClosureParser<LoopData>>(closure),
                                 R"({"data": {"records": [{}]}})"),
                            "Unable to parse posts from response");
    }
    class Idle final : public JsonParser<LoopData> {
    public:
        std::shared_ptr<LoopData> parse(const JsonObject&) const override { return nullptr; }
    };
    expectEnvelopeError(read(std::make_shared<Idle>(), R"({"data": {"records": [{}]}})"),
                        "Unable to parse posts from response");
}

TEST(ResponseEnvelope, AHostsParserFailsWithItsOwnError) {
    const Error own("host", 71, {{"why", std::string("no name")}});
    const auto parser = std::make_shared<KLClosureParser<LoopData>>(
        [=](const JsonObject&) -> std::shared_ptr<LoopData> { throw ParserError(own); });
    const auto answer = read(parser, R"({"data": {"records": [{}]}})");
    expectEnvelopeError(answer, "Unable to parse posts from response");
    const auto& cause = answer.error->underlying();
    EXPECT_EQ(cause->domain(), "host");
    EXPECT_EQ(cause->code(), 71);
    EXPECT_EQ(std::get<std::string>(cause->userInfo().at("why")), "no name");
    EXPECT_EQ(cause->integer("record"), 0);
    EXPECT_EQ(ParserError(own).what(), own.description());
}

} // namespace KeloAPI
