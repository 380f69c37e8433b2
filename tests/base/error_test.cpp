#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/base/Error.hpp>
#include <KeloAPI/base/internal/NeverDestroyed.hpp>
#include <KeloAPI/base/Result.hpp>
#include <KeloAPI/http/HTTPError.hpp>

#include <gtest/gtest.h>

namespace KeloAPI {

namespace {

Error full() {
    Error::UserInfo info;
    info.emplace(NSLocalizedDescriptionKey, "It broke.");
    info.emplace("number", Number::of(419));
    info.emplace("url", *URL::parse("https://service.example/captcha"));
    return {"domain.example", 7, info, Error("under.example", 8)};
}

} // namespace

TEST(ErrorTest, CarriesDomainCodeAndUserInfo) {
    const Error error = full();
    EXPECT_EQ(error.domain(), "domain.example");
    EXPECT_EQ(error.code(), 7);
    EXPECT_EQ(error.userInfo().size(), 3U);
    EXPECT_EQ(error.localizedDescription(), "It broke.");
    EXPECT_EQ(error.integer("number"), 419);
    EXPECT_EQ(error.url("url"), URL::parse("https://service.example/captcha"));
    ASSERT_TRUE(error.underlying());
    EXPECT_EQ(error.underlying()->code(), 8);
}

TEST(ErrorTest, ReadsAKeyOnlyAsWhatItHolds) {
    const Error error = full();
    for (const std::string_view key :
         {std::string_view("url"), NSLocalizedDescriptionKey, std::string_view("missing")}) {
        EXPECT_EQ(error.integer(key), std::nullopt) << key;
    }
    EXPECT_EQ(error.url("number"), std::nullopt);
    EXPECT_EQ(error.url("missing"), std::nullopt);
    const Error odd("domain.example", -3,
                    {{std::string(NSLocalizedDescriptionKey), Number::of(1)}});
    EXPECT_EQ(odd.localizedDescription(), "domain.example error -3") << "there is no message";
}

TEST(ErrorTest, DescribesItselfAndWhatLiesBehindOnOneLine) {
    EXPECT_EQ(full().description(),
              "domain.example 7: It broke. (under.example 8: under.example error 8)");
    EXPECT_EQ(Error::withMessage("d", 1, "m").description(), "d 1: m");
}

TEST(ErrorTest, IsEqualByDomainCodeAndUserInfo) {
    EXPECT_EQ(full(), full());
    EXPECT_EQ(Error("d", 1), Error("d", 1, {}, Error("under", 2)))
        << "what lies behind plays no part";
    for (const Error& other : {Error("d", 2), Error("e", 1), Error::withMessage("d", 1, "m")}) {
        EXPECT_NE(Error("d", 1), other);
    }
    EXPECT_NE(Error::withMessage("d", 1, "n"), Error::withMessage("d", 1, "m"));
    EXPECT_EQ(Error("d", INT64_MIN).code(), INT64_MIN);
    EXPECT_EQ(Error("d", INT64_MAX).code(), INT64_MAX);
}

TEST(HTTPErrorTest, HasDomainCodeAndMessage) {
    const Error error = httpError(HTTPErrorCode::TimedOut, "slow", Error("curl", 28));
    EXPECT_EQ(error.domain(), HTTPErrorDomain);
    EXPECT_EQ(error.code(), 2);
    EXPECT_EQ(error.localizedDescription(), "slow");
    EXPECT_EQ(error.underlying(), Error("curl", 28));
    EXPECT_TRUE(isHTTPError(error, HTTPErrorCode::TimedOut));
    EXPECT_FALSE(isHTTPError(error, HTTPErrorCode::Cancelled));
    EXPECT_FALSE(isHTTPError(Error("other", 2), HTTPErrorCode::TimedOut));
}

// The codes are stable.
static_assert(static_cast<int>(HTTPErrorCode::Unknown) == -1);
static_assert([] {
    using enum HTTPErrorCode;
    int number = 0;
    for (const HTTPErrorCode code :
         {Cancelled, TimedOut, CannotFindHost, CannotConnect, ConnectionLost, ServerTrust,
          UnsupportedURL, InvalidHeader, TooManyRedirects, BadServerResponse, BadJson, EmptyBody,
          TextEncoding, HTTPStatus, CannotWriteFile, ParameterEncoding, BodyTooLarge,
          OutOfResources, Inherited}) {
        if (static_cast<int>(code) != ++number) {
            return false;
        }
    }
    return true;
}());

TEST(ResultTest, IsEitherAValueOrAnError) {
    // A value that cannot be copied.
    Result<std::unique_ptr<int>> good = std::make_unique<int>(3);
    EXPECT_TRUE(good);
    *good.value() += 1;
    EXPECT_EQ(*std::as_const(good).value(), 4);
    const auto taken = std::move(good.value());
    EXPECT_EQ(*taken, 4);
    const Result<std::string> bad = Error("d", 1);
    EXPECT_FALSE(bad);
    EXPECT_EQ(bad.error(), Error("d", 1));
}

TEST(ContractDeathTest, AViolationPrintsOneLineAndAborts) {
    const std::string_view text = "only this and no more"; // which needs no end of its own
    EXPECT_EXIT(contractViolation(text.substr(0, 9)), ::testing::KilledBySignal(SIGABRT),
                "^KeloAPI: contract violated: only this\n$");
    require(true, "never printed");
    EXPECT_DEATH(require(false, "one is two"), "^KeloAPI: contract violated: one is two\n$");
}

TEST(NeverDestroyedTest, HoldsItsObjectAndNeverDestroysIt) {
    static int destroyed = 0;
    struct Held {
        explicit Held(int value)
            : number(value) {}
        ~Held() { ++destroyed; }
        int number;
    };
    {
        NeverDestroyed<Held> held(5);
        EXPECT_EQ(held->number, 5);
        (*held).number = 6;
        EXPECT_EQ(held->number, 6);
    }
    EXPECT_EQ(destroyed, 0);
}

} // namespace KeloAPI
