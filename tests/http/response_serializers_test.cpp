#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/ResponseSerializers.hpp>

#include <gtest/gtest.h>

namespace KeloAPI::testing {

namespace {

/// What comes of an answer with this body; without a status there is no head.
struct Answer {
    std::string body;
    std::optional<int> status = 200;
    std::string contentType = {};
    std::optional<Error> error = {};

    template <class T>
    Result<T> with(Result<T> (*serialize)(const ResponseContent&)) const {
        const URLRequest request;
        std::optional<HTTPResponse> response;
        if (status) {
            response = HTTPResponse{*URL::parse("https://h/"), *status, {}, -1};
        }
        if (!contentType.empty()) {
            response->headerFields.emplace("Content-Type", contentType);
        }
        return serialize({request, response, body, error});
    }
    Result<JsonDocument> json() const { return with(serializeJSON); }
    Result<std::string> text() const { return with(serializeText); }
};

template <class T>
bool fails(const Result<T>& result, HTTPErrorCode code) {
    return !result && isHTTPError(result.error(), code);
}

} // namespace

TEST(ResponseSerializersTest, JSONIsReadWhateverTheStatusAndType) {
    for (const std::optional<int> status :
         {std::optional<int>(), {200}, {204}, {404}, {419}, {500}}) {
        const auto document = Answer{R"({"a":1})", status, status ? "text/html" : ""}.json();
        ASSERT_TRUE(document);
        EXPECT_EQ(document.value().root().object().value()["a"].integer(), 1);
    }
    for (const char* body : {"[]", "1", "null", "\"x\"", "\xEF\xBB\xBF{}"}) {
        EXPECT_TRUE(Answer{body}.json()) << body;
    }
}

TEST(ResponseSerializersTest, NoBodyIsAnErrorForJSONAndAnEmptyText) {
    for (const int status : {200, 204, 205}) {
        EXPECT_TRUE(fails(Answer{"", status}.json(), HTTPErrorCode::EmptyBody)) << status;
    }
    for (const char* type : {"text/plain", "text/plain; charset=utf-8", "text/plain; charset=x"}) {
        EXPECT_EQ((Answer{"", 200, type}.text().value()), "") << type;
    }
}

TEST(ResponseSerializersTest, MalformedJSONIsAnErrorWithItsReason) {
    for (const char* body : {" ", "{", "<html>", "{\"a\":01}", "\xFF"}) {
        const auto document = Answer{body}.json();
        ASSERT_TRUE(fails(document, HTTPErrorCode::BadJson)) << body;
        EXPECT_EQ(document.error().underlying()->domain(), JsonDocument::errorDomain);
    }
}

TEST(ResponseSerializersTest, TheExchangesErrorComesFirst) {
    const Error slow = httpError(HTTPErrorCode::TimedOut, "slow");
    for (const char* body : {"", "{}", "{"}) {
        const Answer answer{body, {}, "", slow};
        EXPECT_TRUE(fails(answer.json(), HTTPErrorCode::TimedOut));
        EXPECT_TRUE(fails(answer.text(), HTTPErrorCode::TimedOut));
    }
}

TEST(ResponseSerializersTest, TextIsConvertedFromTheCharacterSetThatIsNamed) {
    EXPECT_EQ((Answer{"\xE4", 500, "text/plain; charset=iso-8859-1"}.text().value()), "\xC3\xA4");
    for (const char* type : {"text/plain; charset=utf-8", "text/plain; charset=none-such"}) {
        EXPECT_TRUE(fails(Answer{"\xE4", 200, type}.text(), HTTPErrorCode::TextEncoding)) << type;
    }
    for (const Answer& unnamed :
         {Answer{"\xE4\xFF", {}}, Answer{"\xE4\xFF"}, Answer{"\xE4\xFF", 200, "text/plain"}}) {
        EXPECT_EQ(unnamed.text().value(), "\xE4\xFF") << "as it is";
    }
}

} // namespace KeloAPI::testing
