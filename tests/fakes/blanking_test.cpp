#include <KeloAPI/api/internal/Base64.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/fakes/internal/Blanker.hpp>
#include <KeloAPI/fakes/internal/JsonBlanking.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace KeloAPI::testing {

namespace {

/// Under names alone.
std::string blankedByName(std::string_view json, const SecretListener& listener = {}) {
    return fakes::blankedJson(json, SecretNames(), listener, [](std::string text) { return text; });
}

} // namespace

using fakes::Blanker;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

TEST(BlankedJsonTest, BlanksTextsAndNumbersUnderSecretNamesAndKeepsAllElse) {
    const std::pair<const char*, const char*> table[] = {
        {R"({"key":"abc","userId":7})", R"({"key":"BLANKED","userId":7})"},
        {"{ \"password\" :\n\t\"a\\\"b\" , \"x\": 1.50 }",
         "{ \"password\" :\n\t\"BLANKED\" , \"x\": 1.50 }"},
        {R"({"pin":1234,"n":-1e3})", R"({"pin":0,"n":-1e3})"},
        {R"({"token":null,"secret":true,"a":"b"})", R"({"token":null,"secret":true,"a":"b"})"},
        {R"({"token":"","a":"b"})", R"({"token":"","a":"b"})"},
        {R"({"session":{"id":"abc","since":5,"on":false,"l":["x"]},"id":"y"})",
         R"({"session":{"id":"BLANKED","since":0,"on":false,"l":["BLANKED"]},"id":"y"})"},
        {R"({"tokens":["a",["b"],2],"c":["d"]})",
         R"({"tokens":["BLANKED",["BLANKED"],0],"c":["d"]})"},
        {R"([{"\u0074oken":"a"},"token","b"])", R"([{"\u0074oken":"BLANKED"},"token","b"])"},
        {R"({"videoUrl":"https:\/\/h\/a?token=b&c=d"})",
         R"({"videoUrl":"https:\/\/h\/a?token=BLANKED&c=d"})"},
        {R"({"inner":"{\"password\":\"p\",\"a\":[\"b\"]}"})",
         R"({"inner":"{\"password\":\"BLANKED\",\"a\":[\"b\"]}"})"},
        // What breaks off, and what is not quite JSON.
        {R"({"token":"abc)", R"({"token":"BLANKED)"},
        {R"({"token":{"a":"b","c":12)", R"({"token":{"a":"BLANKED","c":0)"},
        {R"({"token":"ab\)", R"({"token":"BLANKED)"},
        {R"(}]{"token":"a"}}],"b")", R"(}]{"token":"BLANKED"}}],"b")"},
        {R"({"token":)", R"({"token":)"},
        {R"({},"token":["a"],"b":["c"])", R"({},"token":["BLANKED"],"b":["c"])"},
        {"\xEF\xBB\xBF{\"key\":\"a\"}", "\xEF\xBB\xBF{\"key\":\"BLANKED\"}"},
    };
    for (const auto& [json, blanked] : table) {
        EXPECT_TRUE(fakes::looksLikeJson(json) || *json == '}') << json;
        EXPECT_EQ(blankedByName(json), blanked);
        EXPECT_EQ(blankedByName(blanked), blanked);
    }
}

TEST(BlankedJsonTest, TellsOfEachSecretWithoutItsEscapes) {
    std::vector<std::string> heard;
    blankedByName(R"({"key":"a\"\u00e9\/b","pin":17,"token":"BLANKED","u":"h?sig=c","otp":["d"]})",
                  [&](std::string_view secret) { heard.emplace_back(secret); });
    EXPECT_THAT(heard, ElementsAre("a\"\xC3\xA9/b", "17", "c", "d"));
}

TEST(BlankerTest, BlanksASecretWhereverElseItStands) {
    const std::string secret = "k3y/with \"marks\" & \xC3\xA9";
    Blanker blanker{SecretNames()};
    EXPECT_EQ(blanker.fields({{"kelo-session-id", secret}}).at("kelo-session-id"), "BLANKED");
    const std::string quoted = R"(k3y/with \"marks\" & )"
                               "\xC3\xA9";
    const std::string slashed = R"(k3y\/with \"marks\" & )"
                                "\xC3\xA9";
    for (const std::string& form : {secret, percentEncoded(secret), quoted, slashed}) {
        EXPECT_EQ(blanker.text("of " + form + ", " + form + "."), "of BLANKED, BLANKED.");
        EXPECT_EQ(blanker.responseBody("{\"text\":\"of " + form + "\"}"),
                  R"({"text":"of BLANKED"})");
    }
    for (const char* before : {"", "a", "ab", "abc"}) {
        // What is left at the edges is shared with the neighbours, a part of a character each.
        const std::string text = blanker.text(base64Encoded(before + secret + "zz"));
        EXPECT_THAT(text, HasSubstr("BLANKED"));
        EXPECT_LT(text.size(), 22U) << text;
    }
    const std::string binary = "\xFF\xFE" + secret + std::string(2, '\0');
    EXPECT_EQ(blanker.responseBody(binary), "\xFF\xFE"
                                            "BLANKED" +
                                                std::string(2, '\0'));
}

TEST(BlankerTest, LearnsFromEveryPlaceAndWhatFollowsASchemeOrAName) {
    Blanker blanker{SecretNames()};
    blanker.fields(
        {{"Authorization", "Bearer abc.def-1"}, {"Set-Cookie", "sid=s1d-s1d-1; Path=/"}});
    blanker.text("https://me:pass-w0rd@h/?token=t0k%2Fen-1&sig=s1g%2fno-2");
    blanker.text("https://h/?next=https%3A%2F%2Fi%2F%3Fa%3Db%26sig%3Ds1g-s1g-1");
    blanker.requestBody(R"({"password":"loop-the-loop"})");
    blanker.responseBody(R"({"key":"k3y-k3y-k3y"})");
    for (const char* secret :
         {"abc.def-1", "s1d-s1d-1", "me:pass-w0rd", "t0k%2Fen-1", "t0k/en-1", "s1g%2fno-2",
          "s1g/no-2", "s1g-s1g-1", "loop-the-loop", "k3y-k3y-k3y"}) {
        EXPECT_EQ(blanker.text(std::string("<") + secret + ">"), "<BLANKED>");
    }
    EXPECT_EQ(blanker.text("Path=/"), "Path=/");
}

TEST(BlankerTest, LearnsTheValueOfEveryCookie) {
    Blanker blanker{SecretNames()};
    blanker.fields({{"cookie", "sid=s1d-s1d-1; pref=pr3f-pr3f;=n0-n4me-1;last=l4st-l4st="},
                    {"Set-Cookie", "one=0ne-0ne-0; Expires=Wed, 21 Oct 2026 07:28:00 GMT; "
                                   "Path=/a/path/2, two=tw0-tw0-0; Domain=d0main.example"}});
    for (const char* secret :
         {"s1d-s1d-1", "pr3f-pr3f", "n0-n4me-1", "l4st-l4st=", "0ne-0ne-0", "tw0-tw0-0"}) {
        EXPECT_EQ(blanker.text(std::string("<") + secret + ">"), "<BLANKED>");
    }
    for (const char* attribute : {"21 Oct 2026 07:28:00 GMT", "/a/path/2", "d0main.example"}) {
        EXPECT_EQ(blanker.text(attribute), attribute);
    }
}

TEST(BlankerTest, LeavesJsonJsonWhereANumberIsSecret) {
    Blanker blanker{SecretNames()};
    EXPECT_EQ(
        blanker.responseBody(R"({"session":123456789,"a":[123456789,-1234567890,12],"b":"x"})"),
        R"({"session":0,"a":[0,0,12],"b":"x"})");
    EXPECT_EQ(blanker.responseBody(R"({"of 123456789":"of 123456789"})"),
              R"({"of BLANKED":"of BLANKED"})");
    EXPECT_EQ(blanker.bodyWithoutKnownValues(R"({"inner":"{\"a\":123456789}"})"),
              R"({"inner":"{\"a\":0}"})");
}

TEST(BlankerTest, TakesShortValuesAndWordsForSecretsUnderTheirNamesOnly) {
    Blanker blanker{SecretNames()};
    EXPECT_EQ(blanker.requestBody(R"({"password":"short-1","pin":12,"otp":"password"})"),
              R"({"password":"BLANKED","pin":0,"otp":"BLANKED"})");
    EXPECT_EQ(blanker.responseBody(R"({"password":"x","caption":"short-1 12 password"})"),
              R"({"password":"BLANKED","caption":"short-1 12 password"})");
}

TEST(BlankerTest, BlanksUsersNamesInBodiesOfRequestsOnly) {
    Blanker blanker{SecretNames()};
    EXPECT_EQ(blanker.requestBody(R"({"username":"mara.loops.1","password":"p"})"),
              R"({"username":"BLANKED","password":"BLANKED"})");
    EXPECT_EQ(blanker.requestBody("email=a%40b&password=p&x=y"),
              "email=BLANKED&password=BLANKED&x=y");
    EXPECT_EQ(blanker.responseBody(R"({"username":"mara.loops.1"})"),
              R"({"username":"mara.loops.1"})");
    EXPECT_EQ(blanker.text("https://h/users?username=mara.loops.1"),
              "https://h/users?username=mara.loops.1");
}

TEST(BlankerTest, BlanksFieldsThatAreNamed) {
    SecretNames names;
    names.add("X-Device");
    Blanker blanker(names);
    const HeaderFields fields = blanker.fields({{"x-device", "a"},
                                                {"X-Own", "b"},
                                                {"X-Empty-Token", ""},
                                                {"Location", "https://h/?key=c"}},
                                               {"x-own"});
    const HeaderFields wanted = {{"x-device", "BLANKED"},
                                 {"X-Own", "BLANKED"},
                                 {"X-Empty-Token", ""},
                                 {"Location", "https://h/?key=BLANKED"}};
    EXPECT_EQ(fields, wanted);
}

} // namespace KeloAPI::testing
