#include "service/http/FaultScript.hpp"
#include "support/TestCertificate.hpp"

#include <gtest/gtest.h>

namespace KeloServiceTest {
namespace {

using KeloService::FaultScript;
using KeloService::FaultScriptError;
using KeloService::Json;
using KeloService::Request;

Json stall() {
    return {{"type", "stall"}};
}

Request request(const std::string& method, const std::string& target) {
    Request made;
    made.method = method;
    made.target = target;
    return made;
}

bool takes(FaultScript& script, const std::string& method, const std::string& target) {
    return script.take(request(method, target)).has_value();
}

TEST(FaultScript, MatchesPathsExactlyOrByPrefix) {
    FaultScript script;
    script.add({{"times", 0}, {"match", {{"path", "/users/me"}}}, {"action", stall()}});
    EXPECT_TRUE(takes(script, "GET", "/users/me"));
    EXPECT_TRUE(takes(script, "POST", "/users/me?x"));
    EXPECT_FALSE(takes(script, "GET", "/users/me/x"));
    EXPECT_FALSE(takes(script, "GET", "/users"));
    script.clear();
    script.add({{"times", 0}, {"match", {{"path", "/users/*"}}}, {"action", stall()}});
    EXPECT_TRUE(takes(script, "GET", "/users/"));
    EXPECT_TRUE(takes(script, "GET", "/users/me/x"));
    EXPECT_FALSE(takes(script, "GET", "/users"));
}

TEST(FaultScript, MatchesMethods) {
    FaultScript script;
    script.add({{"times", 0}, {"match", {{"method", "PUT"}}}, {"action", stall()}});
    EXPECT_TRUE(takes(script, "PUT", "/x"));
    EXPECT_FALSE(takes(script, "GET", "/x"));
}

TEST(FaultScript, AppliesOnceUnlessToldOtherwise) {
    FaultScript script;
    script.add({{"action", stall()}});
    EXPECT_TRUE(takes(script, "GET", "/x"));
    EXPECT_FALSE(takes(script, "GET", "/x"));
    script.add({{"times", 2}, {"action", stall()}});
    EXPECT_TRUE(takes(script, "GET", "/x"));
    EXPECT_TRUE(takes(script, "GET", "/x"));
    EXPECT_FALSE(takes(script, "GET", "/x"));
    script.add({{"times", 0}, {"action", stall()}});
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(takes(script, "GET", "/x"));
    }
}

TEST(FaultScript, LetsTheFirstOnesPass) {
    FaultScript script;
    script.add({{"skip", 2}, {"action", stall()}, {"match", {{"path", "/x"}}}});
    EXPECT_FALSE(takes(script, "GET", "/x"));
    EXPECT_FALSE(takes(script, "GET", "/other"));
    EXPECT_FALSE(takes(script, "GET", "/x"));
    EXPECT_TRUE(takes(script, "GET", "/x"));
    EXPECT_FALSE(takes(script, "GET", "/x"));
}

TEST(FaultScript, TheFirstThatAppliesIsTaken) {
    FaultScript script;
    script.add(Json::array({{{"skip", 1}, {"action", stall()}}, {{"action", stall()}}}));
    EXPECT_TRUE(takes(script, "GET", "/x"));
    EXPECT_TRUE(takes(script, "GET", "/x"));
    EXPECT_FALSE(takes(script, "GET", "/x"));
    const Json list = script.list();
    EXPECT_EQ(list[0].at("taken"), 1);
    EXPECT_EQ(list[0].at("skipped"), 1);
    EXPECT_EQ(list[1].at("taken"), 1);
    EXPECT_EQ(list[0].at("fired"), 0);
}

TEST(FaultScript, LeavesControlRequestsAlone) {
    FaultScript script;
    script.add({{"times", 0}, {"action", stall()}});
    EXPECT_FALSE(takes(script, "GET", "/_service/health"));
}

TEST(FaultScript, ATakenFaultOutlivesTheScript) {
    FaultScript script;
    script.add({{"action", stall()}});
    const auto taken = script.take(request("GET", "/x"));
    script.clear();
    taken->countFired();
    EXPECT_EQ(script.list(), Json::array());
}

TEST(FaultScript, ListsWhatItWasGiven) {
    FaultScript script;
    const Json fault{{"match", {{"path", "/x"}}}, {"times", 3}, {"action", stall()}};
    EXPECT_EQ(script.add(fault), std::vector<int>{1});
    EXPECT_EQ(script.add(Json::array({fault, fault})), (std::vector<int>{2, 3}));
    const Json first = script.list().at(0);
    EXPECT_EQ(first.at("id"), 1);
    EXPECT_EQ(first.at("match"), fault.at("match"));
    EXPECT_EQ(first.at("action"), stall());
}

struct BadScript {
    const char* json;
    const char* says;
};

class BadScriptTest : public ::testing::TestWithParam<BadScript> {};

TEST_P(BadScriptTest, SaysWhatIsWrong) {
    FaultScript script;
    try {
        script.add(Json::parse(GetParam().json));
        FAIL() << GetParam().json;
    } catch (const FaultScriptError& error) {
        EXPECT_NE(std::string(error.what()).find(GetParam().says), std::string::npos)
            << error.what();
    }
    EXPECT_EQ(script.list(), Json::array());
}

INSTANTIATE_TEST_SUITE_P(
    Scripts, BadScriptTest,
    ::testing::Values(
        BadScript{"5", "must be an object"}, BadScript{"{}", "action must be an object"},
        BadScript{R"({"action":{}})", "type must be a text"},
        BadScript{R"({"action":{"type":"explode"}})", "explode is not known"},
        BadScript{R"({"action":{"type":"stall"},"time":3})", "time is not known"},
        BadScript{R"({"action":{"type":"stall"},"times":-1})", "times"},
        BadScript{R"({"action":{"type":"stall"},"times":1.5})", "times"},
        BadScript{R"({"action":{"type":"stall"},"skip":"1"})", "skip"},
        BadScript{R"({"action":{"type":"stall"},"match":"/x"})", "match must be an object"},
        BadScript{R"({"action":{"type":"stall"},"match":{"path":5}})", "match.path"},
        BadScript{R"({"action":{"type":"stall","afterBytes":-1}})", "afterBytes"},
        BadScript{R"({"action":{"type":"reset","afterBytes":"1"}})", "afterBytes"},
        BadScript{R"({"action":{"type":"close","abrupt":1}})", "abrupt"},
        BadScript{R"({"action":{"type":"status"}})", "status"},
        BadScript{R"({"action":{"type":"status","status":99}})", "status"},
        BadScript{R"({"action":{"type":"body"}})", "body"},
        BadScript{R"({"action":{"type":"body","base64":"*"}})", "base64"},
        BadScript{R"({"action":{"type":"error"}})", "code"},
        BadScript{R"({"action":{"type":"redirect"}})", "location"},
        BadScript{R"({"action":{"type":"redirect","location":"/x","status":200}})", "status"},
        BadScript{R"({"action":{"type":"delay"}})", "milliseconds"},
        BadScript{R"({"action":{"type":"garbage"}})", "bytes"},
        BadScript{R"([{"action":{"type":"stall"}},{}])", "fault 2"}));

TEST(FaultScript, ReadsFiles) {
    const TemporaryFolder folder;
    FaultScript script;
    script.addFile(folder.write("good.json", R"([{"action":{"type":"stall"}}])"));
    EXPECT_EQ(script.list().size(), 1U);
    for (const std::string& file :
         {folder.file("absent.json"), folder.write("bad.json", "{"), folder.write("empty.json", ""),
          folder.write("wrong.json", "[{}]"), folder.file(".")}) {
        try {
            script.addFile(file);
            ADD_FAILURE() << file;
        } catch (const FaultScriptError& error) {
            EXPECT_NE(std::string(error.what()).find(file), std::string::npos) << error.what();
        }
    }
}

} // namespace
} // namespace KeloServiceTest
