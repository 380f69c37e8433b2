#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/ResponseSerializers.hpp>

#include <gtest/gtest.h>

namespace KeloAPI {

class ResponseSerializersTest : public ::testing::Test {
protected:
    void respond(int status, HeaderFields fields = {}) {
        response = HTTPResponse{*URL::parse("https://h/"), status, std::move(fields), -1};
    }
    ResponseContent content() const { return {request, response, body, error}; }
    bool jsonFails(HTTPErrorCode code) const { return fails(serializeJSON(content()), code); }
    bool textFails(HTTPErrorCode code) const { return fails(serializeText(content()), code); }
    template <class T>
    static bool fails(const Result<T>& result, HTTPErrorCode code) {
        return !result && isHTTPError(result.error(), code);
    }

    URLRequest request;
    std::optional<HTTPResponse> response;
    std::string body;
    std::optional<Error> error;
};

TEST_F(ResponseSerializersTest, JSONIsReadWhateverTheStatusAndType) {
    body = R"({"a":1})";
    for (const int status : {200, 204, 404, 419, 500}) {
        respond(status, {{"Content-Type", "text/html"}});
        const auto document = serializeJSON(content());
        ASSERT_TRUE(document);
        EXPECT_EQ(document.value().root().object().value()["a"].integer(), 1);
    }
    response.reset();
    EXPECT_TRUE(serializeJSON(content()));
}

TEST_F(ResponseSerializersTest, JSONOfAnotherRootIsJSON) {
    for (const char* text : {"[]", "1", "null", "\"x\"", "\xEF\xBB\xBF{}"}) {
        body = text;
        EXPECT_TRUE(serializeJSON(content())) << text;
    }
}

TEST_F(ResponseSerializersTest, NoBodyIsAnErrorForJSON) {
    for (const int status : {200, 204, 205}) {
        respond(status);
        EXPECT_TRUE(jsonFails(HTTPErrorCode::EmptyBody)) << status;
    }
}

TEST_F(ResponseSerializersTest, MalformedJSONIsAnErrorWithItsReason) {
    for (const char* text : {" ", "{", "<html>", "{\"a\":01}", "\xFF"}) {
        body = text;
        ASSERT_TRUE(jsonFails(HTTPErrorCode::BadJson)) << text;
        EXPECT_EQ(serializeJSON(content()).error().underlying()->domain(),
                  JsonDocument::errorDomain);
    }
}

TEST_F(ResponseSerializersTest, TheExchangesErrorComesFirst) {
    error = httpError(HTTPErrorCode::TimedOut, "slow");
    for (const char* text : {"", "{}", "{"}) {
        body = text;
        EXPECT_TRUE(jsonFails(HTTPErrorCode::TimedOut));
        EXPECT_TRUE(textFails(HTTPErrorCode::TimedOut));
    }
}

TEST_F(ResponseSerializersTest, TextIsConvertedFromItsCharacterSet) {
    body = "\xE4";
    respond(500, {{"content-type", "text/plain; charset=iso-8859-1"}});
    EXPECT_EQ(serializeText(content()).value(), "\xC3\xA4");
    respond(200, {{"Content-Type", "text/plain; charset=utf-8"}});
    EXPECT_TRUE(textFails(HTTPErrorCode::TextEncoding));
    respond(200, {{"Content-Type", "text/plain; charset=none-such"}});
    EXPECT_TRUE(textFails(HTTPErrorCode::TextEncoding));
}

TEST_F(ResponseSerializersTest, TextWithoutACharacterSetIsAsItIs) {
    body = "\xE4\xFF";
    EXPECT_EQ(serializeText(content()).value(), body) << "no head";
    respond(200);
    EXPECT_EQ(serializeText(content()).value(), body);
    respond(200, {{"Content-Type", "text/plain"}});
    EXPECT_EQ(serializeText(content()).value(), body);
}

TEST_F(ResponseSerializersTest, NoBodyIsAnEmptyText) {
    for (const char* type : {"text/plain", "text/plain; charset=utf-8", "text/plain; charset=x"}) {
        respond(200, {{"Content-Type", type}});
        EXPECT_EQ(serializeText(content()).value(), "") << type;
    }
}

} // namespace KeloAPI
