#include "support/TemporaryFolder.hpp"
#include "support/Words.hpp"

#include <KeloAPI/base/URL.hpp>

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <tuple>
#include <type_traits>

namespace KeloAPI {

using testing::wordsOf;

namespace {

URL url(std::string_view text) {
    return URL::parse(text).value();
}

} // namespace

// Only checked text becomes a URL.
static_assert(!std::is_constructible_v<URL, std::string>);
static_assert(!std::is_constructible_v<URL, const char*>);
static_assert(std::is_copy_constructible_v<URL>);
static_assert(std::is_invocable_r_v<std::optional<URL>, decltype(URL::parse), std::string>);

TEST(URLTest, AcceptsURLsAndRelativeReferences) {
    for (const std::string& text : wordsOf(R"x(
             http://h https://service.example/users/me http://h:8080/ http://h:/x http://h:0/
             http://h:65535/ http://[::1]:80/x http://[2001:db8::7]/ http://127.0.0.1/
             http://u:p@h/ http://h? http://h?a=b&c=d#f http://h/# http://h/a//b/ http://h/a;b=c,d
             http://h/%41%7e http://h/!$&'()*+,;=:@-._~ http://h/a/../b/./c HTTP://H/
             a a/b /a //h/a ./a:b ../x ?q #f
             mailto:a@b file:///a/b urn:x:y data:,x http: http:///x x+y-z.1:abc)x")) {
        const auto parsed = URL::parse(text);
        ASSERT_TRUE(parsed) << text;
        EXPECT_EQ(parsed->absoluteString(), text);
    }
}

TEST(URLTest, RefusesWhatHoldsAForeignCharacter) {
    for (const char foreign : std::string_view("\0 \n\t\r\x01\x7f\xFF<>\"{}|\\^`[]%", 20)) {
        EXPECT_FALSE(URL::parse(std::string("http://h/") + foreign)) << foreign;
        EXPECT_FALSE(URL::parse(std::string(1, foreign))) << foreign;
    }
    for (const char* text : {"", "http://h/a b", " http://h", "http://h ", "http://h/\r\n",
                             "http://h/\xC3\xA4", "http://\xC3\xA4.de/"}) {
        EXPECT_FALSE(URL::parse(text)) << text;
    }
    for (const std::string& text : wordsOf("http://h/%4 http://h/%zz http://h/%4g http://h/%%41"
                                           " http://h/?% http://h/#%1 http://h/#a#b")) {
        EXPECT_FALSE(URL::parse(text)) << text;
    }
}

TEST(URLTest, RefusesMalformedStructure) {
    for (const std::string& text : wordsOf(R"(
             http://h:abc/ http://h:80a/ http://h:65536/ http://h:99999999999999999999/
             http://h:-1/ http://[::1 http://::1]/ http://[::1]x/ http://[zz]/ http://[1:2:3]/
             1http://h/ :x http://a@b@c/ +a://h)")) {
        EXPECT_FALSE(URL::parse(text)) << text;
    }
}

TEST(URLTest, TakesAURLApart) {
    struct Row {
        const char* text;
        const char* scheme;
        const char* host;
        int port; // -1: absent
        const char* path;
        std::optional<std::string> query;
    };
    const Row table[] = {
        {"http://h", "http", "h", 80, "", {}},
        {"http://h/", "http", "h", 80, "/", {}},
        {"https://h/", "https", "h", 443, "/", {}},
        {"HTTPS://Service.Example:8443/A?B=C#D", "https", "service.example", 8443, "/A", "B=C"},
        {"http://h//a", "http", "h", 80, "//a", {}},
        {"http://h/a//b/", "http", "h", 80, "/a//b/", {}},
        {"http://h///", "http", "h", 80, "///", {}},
        {"http://h:/x", "http", "h", 80, "/x", {}},
        {"http://h:0/x", "http", "h", 0, "/x", {}},
        {"http://u:p@h:8/", "http", "h", 8, "/", {}},
        {"http://[::1]:81/x", "http", "::1", 81, "/x", {}},
        {"http://[2001:DB8::7]", "http", "2001:db8::7", 80, "", {}},
        {"http://h?", "http", "h", 80, "", ""},
        {"http://h?#", "http", "h", 80, "", ""},
        {"http://h/?a=/b?c#d?e", "http", "h", 80, "/", "a=/b?c"},
        {"http://h#?a", "http", "h", 80, "", {}},
        {"http://h/a;b?c", "http", "h", 80, "/a;b", "c"},
        {"http://h/%2F%41", "http", "h", 80, "/%2F%41", {}},
        {"file:///", "file", "", -1, "/", {}},
        {"file:///a/b", "file", "", -1, "/a/b", {}},
        {"file://localhost/a", "file", "localhost", -1, "/a", {}},
        {"file:////x", "file", "", -1, "//x", {}},
        {"mailto:a@b", "mailto", "", -1, "a@b", {}},
        {"//h/", "", "h", -1, "/", {}},
        {"/", "", "", -1, "/", {}},
        {"/a/", "", "", -1, "/a/", {}},
        {"a/b", "", "", -1, "a/b", {}},
        {"./a:b", "", "", -1, "./a:b", {}},
        {"?q", "", "", -1, "", "q"},
        {"#f", "", "", -1, "", {}},
        {"http:", "http", "", 80, "", {}},
        {"http:///x", "http", "", 80, "/x", {}},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.text);
        const URL parsed = url(row.text);
        EXPECT_EQ(parsed.scheme(), row.scheme);
        EXPECT_EQ(parsed.host(), row.host);
        EXPECT_EQ(parsed.port() ? int{*parsed.port()} : -1, row.port);
        EXPECT_EQ(parsed.path(), row.path);
        EXPECT_EQ(parsed.query(), row.query);
    }
}

TEST(URLTest, AHostHasOneSpelling) {
    const std::pair<const char*, const char*> table[] = {
        {"Service.Example", "service.example"},
        {"service.example.", "service.example"},
        {"u:p@service.example.:8443", "service.example"},
        {"my_host-2", "my_host-2"},
        {"2nd.example", "2nd.example"},
        {"0x7g", "0x7g"},
        {"127.0.0.1", "127.0.0.1"},
        {"[0:0:0:0:0:0:0:1]", "::1"},
        {"[2001:DB8::0:7]", "2001:db8::7"},
        {"[::FFFF:127.0.0.1]", "::ffff:127.0.0.1"},
        {"[::ffff:7f00:1]", "::ffff:127.0.0.1"},
    };
    for (const auto& [text, host] : table) {
        EXPECT_EQ(url("https://" + std::string(text)).host(), host);
    }
}

TEST(URLTest, AHostThatMayBeReadInTwoWaysIsNone) {
    const auto isNone = [](const std::string& host) {
        const URL parsed = url("https://" + host);
        return parsed.host().empty() && !parsed.isHTTP();
    };
    EXPECT_TRUE(isNone(""));
    for (const std::string& host : wordsOf(R"(
             u:p@ :80 . a..b a.. .a local%68ost a%2eb %EF%BD%8Ca a%00 a,b a~b a!b
             127.1 127.0.0.1. 127.0.0.01 0177.0.0.1 256.0.0.1 1.2.3.4.5 2130706433
             0x7f.1 0x7F000001 0x a.1 a.0X1 [v1.a])")) {
        EXPECT_TRUE(isNone(host)) << host;
    }
}

TEST(URLTest, KnowsWhatHTTPCanReach) {
    EXPECT_TRUE(url("http://h").isHTTP());
    EXPECT_TRUE(url("HTTPS://h/x").isHTTP());
    for (const std::string& text : wordsOf("http: http:///x http:/x ftp://h file:///x //h/x x"
                                           " httpx://h mailto:http@h")) {
        EXPECT_FALSE(url(text).isHTTP()) << text;
    }
}

TEST(URLTest, ComparesOrigins) {
    const URL base = url("https://h/a");
    for (const std::string& same : wordsOf("https://h https://H:443/b?c HTTPS://u@h/ https://h.")) {
        EXPECT_TRUE(base.hasOriginOf(url(same))) << same;
    }
    for (const std::string& other :
         wordsOf("http://h https://i https://h:444 https://h.i //h https://%68")) {
        EXPECT_FALSE(base.hasOriginOf(url(other))) << other;
    }
}

TEST(URLTest, EqualityIsThatOfTheTexts) {
    EXPECT_EQ(url("http://h/"), url("http://h/"));
    EXPECT_NE(url("http://h/"), url("http://h"));
    EXPECT_NE(url("http://h/"), url("http://H/"));
}

TEST(URLTest, AppendsAPathComponent) {
    const std::tuple<const char*, const char*, const char*> table[] = {
        {"https://h", "users/me", "https://h/users/me"},
        {"https://h/", "users/me", "https://h/users/me"},
        {"https://h", "/users/me", "https://h/users/me"},
        {"https://h/", "/users/me", "https://h/users/me"},
        {"https://h/v1", "a", "https://h/v1/a"},
        {"https://h/v1/", "a/", "https://h/v1/a/"},
        {"https://h", "", "https://h/"},
        {"https://h", "a//b", "https://h/a//b"},
        {"https://h", "a b", "https://h/a%20b"},
        {"https://h", "a?b", "https://h/a%3Fb"},
        {"https://h", "a#b", "https://h/a%23b"},
        {"https://h", "50%", "https://h/50%25"},
        {"https://h", "%41", "https://h/%2541"},
        {"https://h", "\xC3\xA4\xF0\x9F\x98\x80", "https://h/%C3%A4%F0%9F%98%80"},
        {"https://h", "<>\"{}|\\^`[]", "https://h/%3C%3E%22%7B%7D%7C%5C%5E%60%5B%5D"},
        {"https://h", "a\r\nb\x7f", "https://h/a%0D%0Ab%7F"},
        {"https://h", "!$&'()*+,;=:@-._~", "https://h/!$&'()*+,;=:@-._~"},
        {"https://h", "../x/./y", "https://h/../x/./y"},
        {"https://h/a?q=1#f", "b", "https://h/a/b?q=1#f"},
        {"https://h?q=1", "b", "https://h/b?q=1"},
        {"https://h#f", "b", "https://h/b#f"},
        {"https://", "users/me", "https:///users/me"},
        {"https://?q", "users/me", "https:///users/me?q"},
        {"https://u@", "users/me", "https://u@/users/me"},
        {"https://h", "///a", "https://h///a"},
        {"a:", "//h/b", "a:/h/b"},
        {"a:/", "///h/b", "a:/h/b"},
        {"/", "//h/b", "/h/b"},
        {"?q", "//h", "/h?q"},
        {"/", "//", "/"},
    };
    for (const auto& [base, component, expected] : table) {
        const URL joined = url(base).appendingPathComponent(component);
        EXPECT_EQ(joined.absoluteString(), expected);
        EXPECT_TRUE(URL::parse(joined.absoluteString())) << expected;
    }
    EXPECT_EQ(url("https://h").appendingPathComponent(std::string_view("a\0b", 3)),
              url("https://h/a%00b"));
}

TEST(URLTest, AppendsAQuery) {
    const std::tuple<const char*, const char*, const char*> table[] = {
        {"https://h/a", "b=c", "https://h/a?b=c"},
        {"https://h", "b=c", "https://h?b=c"},
        {"https://h/a", "", "https://h/a"},
        {"https://h/a?", "", "https://h/a?"},
        {"https://h/a?", "b=c", "https://h/a?b=c"},
        {"https://h/a?x=y", "b=c", "https://h/a?x=y&b=c"},
        {"https://h/a#f", "b=c", "https://h/a?b=c#f"},
        {"https://h/a#f?g", "b=c", "https://h/a?b=c#f?g"},
        {"https://h/a?x#f", "b=c", "https://h/a?x&b=c#f"},
    };
    for (const auto& [base, query, expected] : table) {
        EXPECT_EQ(url(base).appendingQuery(query).absoluteString(), expected);
    }
}

TEST(URLTest, ResolvesReferences) {
    const URL base = url("http://a/b/c/d;p?q");
    // The examples of RFC 3986, 5.4, fragments left out.
    const std::pair<const char*, const char*> table[] = {
        {"g:h", "g:h"},
        {"g", "http://a/b/c/g"},
        {"./g", "http://a/b/c/g"},
        {"g/", "http://a/b/c/g/"},
        {"/g", "http://a/g"},
        {"//g", "http://g"},
        {"?y", "http://a/b/c/d;p?y"},
        {"g?y", "http://a/b/c/g?y"},
        {"#s", "http://a/b/c/d;p?q"},
        {"g#s", "http://a/b/c/g"},
        {"g?y#s", "http://a/b/c/g?y"},
        {";x", "http://a/b/c/;x"},
        {"g;x", "http://a/b/c/g;x"},
        {"", "http://a/b/c/d;p?q"},
        {".", "http://a/b/c/"},
        {"./", "http://a/b/c/"},
        {"..", "http://a/b/"},
        {"../g", "http://a/b/g"},
        {"../..", "http://a/"},
        {"../../g", "http://a/g"},
        {"../../../g", "http://a/g"},
        {"/./g", "http://a/g"},
        {"/../g", "http://a/g"},
        {"g.", "http://a/b/c/g."},
        {"..g", "http://a/b/c/..g"},
        {"./../g", "http://a/b/g"},
        {"g;x=1/../y", "http://a/b/c/y"},
        {"g?y/../x", "http://a/b/c/g?y/../x"},
        {"https://other:8/x", "https://other:8/x"},
    };
    for (const auto& [reference, expected] : table) {
        const auto resolved = base.resolve(reference);
        ASSERT_TRUE(resolved) << reference;
        EXPECT_EQ(resolved->absoluteString(), expected) << reference;
    }
    EXPECT_EQ(url("http://h").resolve("a"), url("http://h/a"));
    EXPECT_EQ(url("http://h/#f").resolve(""), url("http://h/"));
}

TEST(URLTest, ResolvesNothingThatIsNoURL) {
    const URL base = url("http://a/b");
    for (const char* reference :
         {"a b", "\xC3\xA4", "http://h:99999/", "http://h:x/", "%", "a\r\nb"}) {
        EXPECT_FALSE(base.resolve(reference)) << reference;
    }
    EXPECT_FALSE(url("relative/base").resolve("x"));
}

TEST(URLTest, MakesFileURLs) {
    EXPECT_EQ(URL::fileURL("/tmp/a").absoluteString(), "file:///tmp/a");
    EXPECT_EQ(URL::fileURL("/tmp/a b%#?\xC3\xA4").absoluteString(),
              "file:///tmp/a%20b%25%23%3F%C3%A4");
    EXPECT_EQ(URL::fileURL("").filePath(), "") << "no path at all leads nowhere";
    const auto here = std::filesystem::current_path(); // which makes a relative path absolute
    for (const std::string path : {"/", "/tmp/a", "/tmp//a/", "//x", "/a b/\xC3\xA4%41?#[x]\\",
                                   "/..", "a", "a/b/", "./a", "../a", "a:1/b?#", "@/a", "%2F/a"}) {
        const URL file = URL::fileURL(path);
        EXPECT_EQ(file.filePath(), path[0] == '/' ? path : (here / path).string());
        EXPECT_EQ(file.host(), "") << "the first component is no host";
        EXPECT_TRUE(URL::parse(file.absoluteString())) << path;
        EXPECT_FALSE(file.isHTTP());
    }
}

TEST(URLTest, AFileURLLeadsNowhereElseWhereTheWorkingDirectoryIsGone) {
    // In a process of its own, because all threads share the working directory.
    EXPECT_EXIT(
        {
            const testing::TemporaryFolder folder;
            const bool gone =
                chdir(folder.path().c_str()) == 0 && rmdir(folder.path().c_str()) == 0;
            exit(gone && URL::fileURL("etc/passwd").filePath() == "etc/passwd" ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(URLTest, FilePathIsForFilesOnly) {
    EXPECT_EQ(url("FILE:///a").filePath(), "/a");
    EXPECT_EQ(url("file://localhost/a%20b").filePath(), "/a b");
    EXPECT_EQ(url("http://h/a").filePath(), std::nullopt);
    EXPECT_EQ(url("/a").filePath(), std::nullopt);
    EXPECT_EQ(url("file:///a%00b").filePath(), std::nullopt) << "no file has such a name";
}

TEST(URLTest, PercentEncodesAllButUnreservedCharacters) {
    EXPECT_EQ(percentEncoded("AZaz09-._~"), "AZaz09-._~");
    EXPECT_EQ(percentEncoded(" !\"#$%&'()*+,/:;<=>?@[\\]^`{|}"),
              "%20%21%22%23%24%25%26%27%28%29%2A%2B%2C%2F%3A%3B%3C%3D%3E%3F%40%5B%5C%5D%5E%60%7B%"
              "7C%7D");
    EXPECT_EQ(percentEncoded("\xC3\xA4\xFF"), "%C3%A4%FF");
    EXPECT_EQ(percentEncoded(std::string_view("\0\n", 2)), "%00%0A");
    EXPECT_EQ(percentEncoded(""), "");
}

} // namespace KeloAPI
