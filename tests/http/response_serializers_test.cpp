#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/internal/TextDecoding.hpp>
#include <KeloAPI/http/ResponseSerializers.hpp>

#include <gtest/gtest.h>

#include <tuple>

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

using namespace std::string_view_literals;

TEST(CharsetTest, IsReadFromTheContentType) {
    const std::pair<const char*, const char*> table[] = {
        {"", ""},
        {"text/plain", ""},
        {"text/plain;", ""},
        {"text/plain; charset=utf-8", "utf-8"},
        {"text/plain;charset=UTF-8", "UTF-8"},
        {"text/plain; CharSet=latin1", "latin1"},
        {"text/plain; charset=\"utf-8\"", "utf-8"},
        {"text/plain; charset = utf-8 ", "utf-8"},
        {"text/plain; format=flowed; charset=utf-8", "utf-8"},
        {"text/plain; charset=utf-8; format=flowed", "utf-8"},
        {"text/plain; charset=a; charset=b", "a"},
        {"text/plain; xcharset=a", ""},
        {"text/plain; charset", ""},
        {"text/plain; charset=", ""},
        {"text/plain; charset=\"", "\""},
        {"charset=utf-8", ""},
        {";;;charset=x", "x"},
    };
    for (const auto& [type, expected] : table) {
        EXPECT_EQ(charsetOf(type), expected) << type;
    }
}

TEST(TextDecodingTest, ConvertsToUTF8) {
    const std::tuple<std::string_view, const char*, std::string_view> table[] = {
        {"abc", "utf-8", "abc"},
        {"abc", "US-ASCII", "abc"},
        {"", "utf-8", ""},
        {"a\0b"sv, "utf-8", "a\0b"sv},
        {"\xE4\xF6", "ISO-8859-1", "\xC3\xA4\xC3\xB6"},
        {"\xE4\xF6", "ISO_8859-1:1987", "\xC3\xA4\xC3\xB6"},
        {"abc", "ANSI_X3.4-1968", "abc"},
        {"\x80", "windows-1252", "\xE2\x82\xAC"},
        {"\0a\xD8\x3D\xDE\x00"sv, "UTF-16BE", "a\xF0\x9F\x98\x80"},
        {"\x93\xFA\x96\x7B", "Shift_JIS", "\xE6\x97\xA5\xE6\x9C\xAC"},
        {"\x1B$BF|K\\\x1B(B", "ISO-2022-JP", "\xE6\x97\xA5\xE6\x9C\xAC"},
        // Might be the first half of a pair, so that the converter waits for more.
        {"a\x88\x66", "BIG5-HKSCS", "a\xC3\x8A"},
        {"a\xA2", "TCVN5712-1", "a\xC3\x82"},
    };
    for (const auto& [bytes, charset, text] : table) {
        EXPECT_EQ(decodedText(bytes, charset), text) << charset;
    }
}

TEST(TextDecodingTest, ConvertsLongTexts) {
    const std::string latin(100'001, '\xE4');
    const auto text = decodedText(latin, "latin1");
    ASSERT_TRUE(text);
    EXPECT_EQ(text->size(), 200'002U);
    EXPECT_EQ(text->substr(200'000), "\xC3\xA4");
    std::string utf8;
    for (int i = 0; i < 5000; ++i) {
        utf8 += "\xE2\x82\xAC";
    }
    EXPECT_EQ(decodedText(utf8, "utf-8"), utf8);
}

TEST(TextDecodingTest, RefusesBytesThatAreNoText) {
    const std::pair<const char*, const char*> table[] = {
        {"\xFF", "utf-8"},     {"abc\xE4", "utf-8"},  {"\xC3", "utf-8"}, {"\xED\xA0\x80", "utf-8"},
        {"\xC0\x80", "utf-8"}, {"\x80", "us-ascii"},  {"a", "UTF-16BE"}, {"\xDC\xDC", "UTF-16BE"},
        {"\x93", "Shift_JIS"}, {"\xE2\x82", "utf-8"},
    };
    for (const auto& [bytes, charset] : table) {
        EXPECT_EQ(decodedText(bytes, charset), std::nullopt) << charset;
    }
    EXPECT_EQ(decodedText(std::string(10'000, 'a') + '\xFF', "utf-8"), std::nullopt);
}

TEST(TextDecodingTest, RefusesSetsItDoesNotKnowAndOptions) {
    for (const char* charset : {"no-such-set", "\"", "utf-9", "../../x", "utf-8x", "utf-8//IGNORE",
                                "utf-8//TRANSLIT", "utf-8/"}) {
        EXPECT_EQ(decodedText("abc", charset), std::nullopt) << charset;
    }
}

} // namespace KeloAPI::testing
