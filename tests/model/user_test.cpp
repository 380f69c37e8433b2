#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/LoopData.hpp>

#include <gtest/gtest.h>

namespace KeloAPI::testing {

TEST(UserTest, IsEmptyByDefault) {
    const KLWatchUser user;
    EXPECT_EQ(user.username, std::nullopt);
    EXPECT_EQ(user.loopData, nullptr);
}

TEST(UserParserTest, EveryKeyWithEveryKindOfValue) {
    using U = KLWatchUser;
    Reads names = texts();
    names[""] = "";
    names[R"("a \u00e4")"] = "a \xC3\xA4";
    checkParser<UserParser>({{"username", R"("ann")", "ann", &U::username, names, absent}});
    const auto loops = [](auto member) {
        return [member](const U& made) {
            return made.loopData ? shown(std::invoke(member, *made.loopData)) : absent;
        };
    };
    checkParser<UserParser>(
        {{"loopCount", "10", "10", loops(&LoopData::count), numberTexts(), absent}},
        R"({"loopVelocity":1.5)");
    checkParser<UserParser>(
        {{"loopVelocity", "1.5", "1.5", loops(&LoopData::velocity), numberTexts(), absent}},
        R"({"loopCount":10)");
}

TEST(UserParserTest, LoopDataIsASnapshotOfNowWhateverTheStandAloneFormsKeysSay) {
    const Date before = Date::now();
    const JsonText json(R"({"loopCount":18446744073709551615,"loopVelocity":-2,
                            "created":"2015-03-01T12:30:05.250","onFire":true})");
    const auto data = UserParser().parse(json.object())->loopData;
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(data->count.stringValue(), "18446744073709551615");
    EXPECT_EQ(data->velocity, Number::of(-2));
    EXPECT_FALSE(data->onFire);
    EXPECT_GE(data->created, before);
    EXPECT_LE(data->created, Date::now());
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
    EXPECT_EQ(parseUser(JsonText("{}").object())->username, "");
    const auto embedded =
        parseUser(JsonText(R"({"username":"b","loopCount":1,"loopVelocity":2})").object());
    EXPECT_EQ(embedded->username, "b");
    EXPECT_NE(embedded->loopData, nullptr);
}

} // namespace KeloAPI::testing
