#include <KeloAPI/base/internal/PercentDecoding.hpp>
#include <KeloAPI/http/internal/Secrets.hpp>
#include <KeloAPI/http/URLRequest.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace KeloAPI::testing {

using ::testing::ElementsAre;

TEST(SecretNamesTest, AreThoseThatSpeakOfASecretHoweverTheyAreWritten) {
    const SecretNames names;
    for (const char* name : {"kelo-session-id",
                             "KELO-SESSION-ID",
                             "sessionKey",
                             "Authorization",
                             "Proxy-Authorization",
                             "WWW-Authenticate-Token",
                             "Cookie",
                             "Set-Cookie",
                             "password",
                             "user[password]",
                             "passwd",
                             "access_token",
                             "accessToken",
                             "X-Amz-Signature",
                             "X-Amz-Credential",
                             "api-key",
                             "API_KEY",
                             "key",
                             "Key",
                             "sig",
                             "auth",
                             "client_secret",
                             "to%6ben",
                             "refreshToken"}) {
        EXPECT_TRUE(names.contains(name)) << name;
    }
    for (const char* name : {"", "keys", "postId", "author", "authorId", "username", "size",
                             "anchor", "page", "pinned", "Accept-Language", "User-Agent",
                             "X-Kelo-Client", "ts", "monkey", "design", "passage"}) {
        EXPECT_FALSE(names.contains(name)) << name;
    }
}

TEST(SecretNamesTest, AreThoseThatAreAdded) {
    SecretNames names;
    names.add("X-Device");
    EXPECT_TRUE(names.contains("x_device"));
    EXPECT_FALSE(names.contains("X-Device-Name"));
    EXPECT_THAT(names.added(), ElementsAre("xdevice"));
}

TEST(WithoutSecretsTest, BlanksValuesInQueriesFormsAndInFrontOfHosts) {
    const std::pair<const char*, const char*> table[] = {
        {"", ""},
        {"https://h/a?b=c&d", "https://h/a?b=c&d"},
        {"https://h/a?token=abc&b=c", "https://h/a?token=BLANKED&b=c"},
        {"https://h/a?b=c&sig=a%2Fb#x", "https://h/a?b=c&sig=BLANKED#x"},
        {"https://h/a#access_token=abc", "https://h/a#access_token=BLANKED"},
        {"https://h/a?to%6Ben=abc", "https://h/a?to%6Ben=BLANKED"},
        {"https://h/a?token=&b=c", "https://h/a?token=&b=c"},
        {"https://h/a?token=a=b==", "https://h/a?token=BLANKED"},
        {"token=abc", "token=BLANKED"},
        {"password=a&name=b", "password=BLANKED&name=b"},
        {"see https://h/?key=abc, please", "see https://h/?key=BLANKED please"},
        {R"(https:\/\/h\/a?x=y\u0026key=abc\u0026z=1)",
         R"(https:\/\/h\/a?x=y\u0026key=BLANKED\u0026z=1)"},
        {R"(\key=abc u0026key=abc)", R"(\key=BLANKED u0026key=abc)"},
        {"<a href=\"https://h/?key=abc\">", "<a href=\"https://h/?key=BLANKED\">"},
        // URLs in URLs: only what is escaped no deeper than the "=" ends a value.
        {"https://h/?next=https%3A%2F%2Fi%2F%3Ftoken%3Dabc",
         "https://h/?next=https%3A%2F%2Fi%2F%3Ftoken%3DBLANKED"},
        {"https://h/?next=https%3a%2f%2fi%3fa%3db%26key%3dc%26d%3de&f=g",
         "https://h/?next=https%3a%2f%2fi%3fa%3db%26key%3dBLANKED%26d%3de&f=g"},
        {"https://h/?a=%22sig%3Db%22&c=d", "https://h/?a=%22sig%3DBLANKED%22&c=d"},
        {"https://h/?a=i%3Fsig%3Db%2526c%23d", "https://h/?a=i%3Fsig%3DBLANKED%23d"},
        {"https://h/?a=i%3Fb%3Dj%253Fkey%253Dc%2526d%26e",
         "https://h/?a=i%3Fb%3Dj%253Fkey%253DBLANKED%2526d%26e"},
        {"i%3Fuser%5Bpassword%5D%3Da", "i%3Fuser%5Bpassword%5D%3DBLANKED"},
        {"https://h/?token=a%26b%22c%3Dd%23e", "https://h/?token=BLANKED"},
        {"https://h/?a=key%3D&b=%3Dc", "https://h/?a=key%3D&b=%3Dc"},
        {"100% token%3", "100% token%3"},
        {"%25%2525=%25", "%25%2525=%25"},
        {"https://user:pass@h/a", "https://BLANKED@h/a"},
        {R"(https:\/\/user@h)", R"(https:\/\/BLANKED@h)"},
        {"https://a:b@h/x https://c:d@i/y", "https://BLANKED@h/x https://BLANKED@i/y"},
        {"https://h/a/@user", "https://h/a/@user"},
        {"https://h/a?mail=a@b", "https://h/a?mail=a@b"},
        {"=a@b", "=a@b"},
        {"@", "@"},
    };
    for (const auto& [text, blanked] : table) {
        EXPECT_EQ(withoutSecrets(text, SecretNames()), blanked);
        EXPECT_EQ(withoutSecrets(blanked, SecretNames()), blanked);
    }
}

TEST(WithoutSecretsTest, TakesNoLongerForManyMarksThanForTheirLength) {
    const std::string path = "https://u:p@h/" + std::string(std::size_t{4} << 20U, '@');
    EXPECT_EQ(withoutSecrets(path, SecretNames()), "https://BLANKED" + path.substr(11));
    const std::string query(std::size_t{1} << 20U, '=');
    EXPECT_EQ(withoutSecrets(query, SecretNames()), query);
}

TEST(WithoutSecretsTest, TellsOfEachSecretAsItStood) {
    std::vector<std::string> heard;
    withoutSecrets("https://u:p@h/?token=a%20b&key=BLANKED&sig=c", SecretNames(),
                   [&](std::string_view secret) { heard.emplace_back(secret); });
    EXPECT_THAT(heard, ElementsAre("u:p", "a%20b", "c"));
}

TEST(WithoutSecretsTest, IsWhatARequestIsDescribedBy) {
    URLRequest request;
    request.url = URL::parse("https://me:mine@h/upload/1?segmentIndex=2&uploadToken=s3cr3t");
    EXPECT_EQ(request.description(),
              "GET https://BLANKED@h/upload/1?segmentIndex=2&uploadToken=BLANKED");
}

TEST(PercentDecodedTest, UndoesWholeEscapesOnly) {
    EXPECT_EQ(percentDecoded("a%20b%2Fc%2f%e2%82%ac"), "a b/c/\xE2\x82\xAC");
    EXPECT_EQ(percentDecoded("%4%%zz%1g%"), "%4%%zz%1g%");
    EXPECT_EQ(percentDecoded("%00"), std::string(1, '\0'));
}

} // namespace KeloAPI::testing
