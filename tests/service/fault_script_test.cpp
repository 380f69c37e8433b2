#include "service/http/FaultScript.hpp"

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

struct MatchCase {
    const char* fault;
    /// Requests in their order, and whether each is hit.
    std::vector<std::pair<const char*, bool>> requests;
};

TEST(FaultScript, HitsTheRequestsThatMatch) {
    const MatchCase cases[] = {
        {R"({"times": 0, "match": {"path": "/users/me"}})",
         {{"GET /users/me", true},
          {"POST /users/me?x", true},
          {"GET /users/me/x", false},
          {"GET /users", false}}},
        {R"({"times": 0, "match": {"path": "/users/*"}})",
         {{"GET /users/", true}, {"GET /users/me/x", true}, {"GET /users", false}}},
        {R"({"times": 0, "match": {"method": "PUT"}})", {{"PUT /x", true}, {"GET /x", false}}},
        {R"({"times": 0})",
         {{"GET /x", true}, {"GET /x", true}, {"GET /x", true}, {"GET /_service/health", false}}},
        {"{}", {{"GET /x", true}, {"GET /x", false}}},
        {R"({"times": 2})", {{"GET /x", true}, {"GET /x", true}, {"GET /x", false}}},
        {R"({"skip": 2, "match": {"path": "/x"}})",
         {{"GET /x", false},
          {"GET /other", false},
          {"GET /x", false},
          {"GET /x", true},
          {"GET /x", false}}},
    };
    for (const MatchCase& one : cases) {
        Json fault = Json::parse(one.fault);
        fault["action"] = stall();
        FaultScript script;
        script.add(fault);
        for (const auto& [line, isHit] : one.requests) {
            const Request request = KeloService::parseHead(line);
            EXPECT_EQ(script.take(request) != nullptr, isHit) << one.fault << " " << line;
        }
    }
}

TEST(FaultScript, TheFirstThatAppliesIsTaken) {
    FaultScript script;
    script.add(Json::array({{{"skip", 1}, {"action", stall()}}, {{"action", stall()}}}));
    const Request request = KeloService::parseHead("GET /x");
    EXPECT_TRUE(script.take(request));
    EXPECT_TRUE(script.take(request));
    EXPECT_FALSE(script.take(request));
    const Json list = script.list();
    EXPECT_EQ(list[0].at("taken"), 1);
    EXPECT_EQ(list[0].at("skipped"), 1);
    EXPECT_EQ(list[1].at("taken"), 1);
    EXPECT_EQ(list[0].at("fired"), 0);
}

TEST(FaultScript, ATakenFaultOutlivesTheScript) {
    FaultScript script;
    script.add({{"action", stall()}});
    const auto taken = script.take(KeloService::parseHead("GET /x"));
    script.clear();
    ++taken->fired;
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

TEST(FaultScript, SaysWhatIsWrong) {
    const BadScript scripts[] = {
        {"5", "must be an object"},
        {"{}", "action must be an object"},
        {R"({"action":{}})", "type must be a text"},
        {R"({"action":{"type":"explode"}})", "explode is not known"},
        {R"({"action":{"type":"stall"},"time":3})", "time is not known"},
        {R"({"action":{"type":"stall"},"times":-1})", "times"},
        {R"({"action":{"type":"stall"},"times":1.5})", "times"},
        {R"({"action":{"type":"stall"},"skip":"1"})", "skip"},
        {R"({"action":{"type":"stall"},"match":"/x"})", "match must be an object"},
        {R"({"action":{"type":"stall"},"match":{"path":5}})", "match.path"},
        {R"({"action":{"type":"stall","afterBytes":-1}})", "afterBytes"},
        {R"({"action":{"type":"reset","afterBytes":"1"}})", "afterBytes"},
        {R"({"action":{"type":"close","abrupt":1}})", "abrupt"},
        {R"({"action":{"type":"status"}})", "status"},
        {R"({"action":{"type":"status","status":99}})", "status"},
        {R"({"action":{"type":"body"}})", "body"},
        {R"({"action":{"type":"body","base64":"*"}})", "base64"},
        {R"({"action":{"type":"error"}})", "code"},
        {R"({"action":{"type":"redirect"}})", "location"},
        {R"({"action":{"type":"redirect","location":"/x","status":200}})", "status"},
        {R"({"action":{"type":"delay"}})", "milliseconds"},
        {R"({"action":{"type":"garbage"}})", "bytes"},
        {R"([{"action":{"type":"stall"}},{}])", "fault 2"},
    };
    FaultScript script;
    for (const auto& [json, says] : scripts) {
        try {
            script.add(Json::parse(json));
            ADD_FAILURE() << json;
        } catch (const FaultScriptError& error) {
            EXPECT_NE(std::string(error.what()).find(says), std::string::npos) << error.what();
        }
    }
    EXPECT_EQ(script.list(), Json::array());
}

} // namespace
} // namespace KeloServiceTest
