#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/LoopData.hpp>

#include <gtest/gtest.h>

namespace KeloAPI {

using testing::JsonText;

namespace {

std::shared_ptr<KLWatchUser> user(const std::string& json) {
    return UserParser().parse(JsonText(json).object());
}

} // namespace

TEST(UserTest, IsEmptyByDefault) {
    const KLWatchUser user;
    EXPECT_EQ(user.username, std::nullopt);
    EXPECT_EQ(user.loopData, nullptr);
}

TEST(UserParserTest, OfAnEmptyObjectMakesAUserWithoutAName) {
    EXPECT_EQ(user("{}")->username, "");
    EXPECT_EQ(user("{}")->loopData, nullptr);
}

TEST(UserParserTest, EveryKeyWithEveryKindOfValue) {
    testing::Reads names = testing::texts();
    names[""] = "";
    const testing::KeyTable<KLWatchUser>::Rules rules = {
        {"username", R"("ann")", "ann", testing::showing<KLWatchUser>(&KLWatchUser::username),
         names, testing::absent}};
    testing::KeyTable<KLWatchUser>(testing::parseWith<UserParser>(), rules).check();

    const auto loops = [](auto member) {
        return [member](const KLWatchUser& made) {
            return made.loopData ? std::invoke(member, *made.loopData).stringValue()
                                 : std::string("no loops");
        };
    };
    const auto beside = [](const std::string& other) {
        return [other](const std::string& members) {
            return "{" + other + (members.empty() ? "" : ",") + members + "}";
        };
    };
    const testing::KeyTable<KLWatchUser>::Rules counts = {
        {"loopCount", "10", "10", loops(&LoopData::count), testing::numberTexts(), "no loops"}};
    testing::KeyTable<KLWatchUser>(testing::parseWith<UserParser>(), counts,
                                   beside(R"("loopVelocity":1.5)"))
        .check();
    const testing::KeyTable<KLWatchUser>::Rules velocities = {{"loopVelocity", "1.5", "1.5",
                                                               loops(&LoopData::velocity),
                                                               testing::numberTexts(), "no loops"}};
    testing::KeyTable<KLWatchUser>(testing::parseWith<UserParser>(), velocities,
                                   beside(R"("loopCount":10)"))
        .check();
}

TEST(UserParserTest, AUsernameIsTextOrAbsent) {
    EXPECT_EQ(user(R"({"username":"a \u00e4"})")->username, "a \xC3\xA4");
    EXPECT_EQ(user(R"({"username":""})")->username, "");
    for (const char* value : {"5", "null", "true", "{}", "[]", "[\"a\"]"}) {
        EXPECT_EQ(user(R"({"username":)" + std::string(value) + "}")->username, std::nullopt)
            << value;
    }
}

TEST(UserParserTest, LoopDataNeedsBothNumbers) {
    for (const char* json :
         {R"({"loopCount":10})", R"({"loopVelocity":1.5})",
          R"({"loopCount":"10","loopVelocity":1.5})", R"({"loopCount":10,"loopVelocity":"1.5"})",
          R"({"loopCount":null,"loopVelocity":1.5})", R"({"loopCount":10,"loopVelocity":null})",
          R"({"loopCount":[10],"loopVelocity":1.5})"}) {
        EXPECT_EQ(user(json)->loopData, nullptr) << json;
    }
    const auto before = Date::now();
    const auto data = user(R"({"loopCount":10,"loopVelocity":1.5})")->loopData;
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(data->count, Number::of(10));
    EXPECT_EQ(data->velocity, Number::of(1.5));
    EXPECT_FALSE(data->onFire);
    EXPECT_GE(data->created, before);
    EXPECT_LE(data->created, Date::now());
}

TEST(UserParserTest, LoopDataKeepsTheNumbersAsTheyCame) {
    const auto data = user(R"({"loopCount":18446744073709551615,"loopVelocity":-2,
                              "created":"2015-03-01T12:30:05.250","onFire":true})")
                          ->loopData;
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(data->count.stringValue(), "18446744073709551615");
    EXPECT_EQ(data->velocity, Number::of(-2));
    EXPECT_FALSE(data->onFire) << "the stand-alone form's keys play no part";
    ASSERT_NE(user(R"({"loopCount":true,"loopVelocity":false})")->loopData, nullptr)
        << "booleans are numbers";
}

TEST(ParseUserTest, PrefersTheObjectUnderUser) {
    EXPECT_EQ(parseUser(JsonText(R"({"user":{"username":"a"},"username":"b"})").object())->username,
              "a");
    EXPECT_EQ(parseUser(JsonText(R"({"user":{},"username":"b"})").object())->username, "")
        << "an empty object is one";
}

TEST(ParseUserTest, OtherwiseReadsTheRecordItself) {
    for (const char* value : {"\"x\"", "null", "5", "[{\"username\":\"a\"}]", "true"}) {
        const JsonText json(R"({"username":"b","user":)" + std::string(value) + "}");
        EXPECT_EQ(parseUser(json.object())->username, "b") << value;
    }
    const auto embedded =
        parseUser(JsonText(R"({"username":"b","loopCount":1,"loopVelocity":2})").object());
    EXPECT_EQ(embedded->username, "b");
    EXPECT_NE(embedded->loopData, nullptr);
}

TEST(ParseUserTest, AlwaysGivesAUser) {
    const auto nobody = parseUser(JsonText("{}").object());
    ASSERT_NE(nobody, nullptr);
    EXPECT_EQ(nobody->username, "");
}

} // namespace KeloAPI
