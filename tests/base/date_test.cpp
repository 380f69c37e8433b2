#include <KeloAPI/base/Date.hpp>

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <ctime>

namespace KeloAPI {

using namespace std::chrono_literals;
using std::chrono::sys_days;

namespace {

constexpr Date springNight = sys_days(2015y / 3 / 29) + 1h + 30min + 5s + 250ms;

std::optional<Date> date(std::string_view text) {
    return DateFormatter().date(text);
}

/// Sets the process's time zone and locale, and restores them.
class Surroundings {
public:
    Surroundings(const char* zone, const char* locale) {
        setenv("TZ", zone, 1);
        tzset();
        _locale = std::setlocale(LC_ALL, locale);
    }
    ~Surroundings() {
        std::setlocale(LC_ALL, "C");
        unsetenv("TZ");
        tzset();
    }
    bool localeExists() const { return _locale != nullptr; }

private:
    const char* _locale;
};

} // namespace

TEST(DateTest, ReadsThePattern) {
    EXPECT_EQ(date("2015-03-01T12:30:05.250"), sys_days(2015y / 3 / 1) + 12h + 30min + 5s + 250ms);
    EXPECT_EQ(date("2015-06-01T08:09:10.500"), sys_days(2015y / 6 / 1) + 8h + 9min + 10s + 500ms);
    EXPECT_EQ(date("1970-01-01T00:00:00.000"), Date());
    EXPECT_EQ(date("1969-12-31T23:59:59.999"), Date() - 1ms);
    EXPECT_EQ(date("0001-01-01T00:00:00.0"), sys_days(1y / 1 / 1));
    EXPECT_EQ(date("9999-12-31T23:59:59.999"),
              sys_days(9999y / 12 / 31) + 23h + 59min + 59s + 999ms);
}

TEST(DateTest, ReadsSecondsOfOneDigit) {
    EXPECT_EQ(date("2015-03-01T12:30:5.250"), date("2015-03-01T12:30:05.250"));
    EXPECT_EQ(date("2015-03-01T12:30:0.000"), date("2015-03-01T12:30:00.000"));
    EXPECT_EQ(date("2015-03-01T12:30:005.250"), std::nullopt);
    EXPECT_EQ(date("2015-03-01T12:30:.250"), std::nullopt);
}

TEST(DateTest, TruncatesTheFractionToMilliseconds) {
    const auto whole = *date("2015-03-01T12:30:05.0");
    const std::pair<const char*, std::chrono::milliseconds> table[] = {
        {".2", 200ms},
        {".25", 250ms},
        {".250", 250ms},
        {".250000", 250ms},
        {".2509", 250ms},
        {".0009", 0ms},
        {".999999999", 999ms},
        {".001", 1ms},
        {".0", 0ms},
        {".1999", 199ms},
        {".00000000000000000000000000000001", 0ms},
    };
    for (const auto& [fraction, expected] : table) {
        EXPECT_EQ(date(std::string("2015-03-01T12:30:05") + fraction), whole + expected)
            << fraction;
    }
}

TEST(DateTest, KnowsTheCalendar) {
    EXPECT_TRUE(date("2016-02-29T00:00:00.0")) << "a leap year";
    EXPECT_TRUE(date("2000-02-29T00:00:00.0"));
    EXPECT_FALSE(date("2015-02-29T00:00:00.0"));
    EXPECT_FALSE(date("1900-02-29T00:00:00.0"));
    EXPECT_FALSE(date("2015-02-30T00:00:00.0"));
    EXPECT_FALSE(date("2015-04-31T00:00:00.0"));
    EXPECT_FALSE(date("2015-13-01T00:00:00.0"));
    EXPECT_FALSE(date("2015-00-01T00:00:00.0"));
    EXPECT_FALSE(date("2015-01-00T00:00:00.0"));
    EXPECT_FALSE(date("2015-01-32T00:00:00.0"));
}

TEST(DateTest, KnowsTheClock) {
    EXPECT_TRUE(date("2015-01-01T23:59:59.999"));
    EXPECT_FALSE(date("2015-01-01T24:00:00.0"));
    EXPECT_FALSE(date("2015-01-01T00:60:00.0"));
    EXPECT_FALSE(date("2015-01-01T00:00:60.0"));
    EXPECT_FALSE(date("2015-01-01T00:00:99.0"));
}

TEST(DateTest, RefusesEverythingElse) {
    for (const char* text : {"",
                             " ",
                             "2015",
                             "2015-03-01",
                             "2015-03-01T12:30:05",
                             "2015-03-01T12:30:05.",
                             "2015-03-01 12:30:05.250",
                             "2015-03-01t12:30:05.250",
                             "2015-03-01T12:30:05.250Z",
                             "2015-03-01T12:30:05.250 ",
                             " 2015-03-01T12:30:05.250",
                             "2015-03-01T12:30:05.250+00:00",
                             "2015-03-01T12:30:05,250",
                             "2015-03-01T12:30:05.25x",
                             "2015/03/01T12:30:05.250",
                             "15-03-01T12:30:05.250",
                             "12015-03-01T12:30:05.250",
                             "-2015-03-01T12:30:05.250",
                             "+2015-03-01T12:30:05.250",
                             "2015-03-01T-2:30:05.250",
                             "2015-03-01T12:30:-5.250",
                             "2015-03-01T12:30:05.-25",
                             "20a5-03-01T12:30:05.250",
                             "2015-03-01T12-30-05.250",
                             "2015-03-01T12:3005.250",
                             "garbage",
                             "2015-03-01T12:30:05.250\n",
                             "\xD9\xA2\xD9\xA0\xD9\xA1\xD9\xA5-03-01T12:30:05.250"}) {
        EXPECT_EQ(date(text), std::nullopt) << text;
    }
    EXPECT_EQ(date(std::string_view("2015-03-01T12:30:05.250\0", 24)), std::nullopt);
}

TEST(DateTest, DoesNotDependOnTheTimeZone) {
    for (const char* zone : {"UTC", "Europe/Berlin", "XXX-14", "YYY12", "America/St_Johns"}) {
        const Surroundings surroundings(zone, "C");
        EXPECT_EQ(date("2015-03-29T01:30:05.250"), springNight) << zone;
    }
}

TEST(DateTest, DoesNotDependOnTheLocale) {
    int foreign = 0;
    for (const char* locale : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8", "en_US.UTF-8", "ar_SA.UTF-8",
                               "fa_IR", "fa_IR.UTF-8"}) {
        const Surroundings surroundings("UTC", locale);
        if (surroundings.localeExists()) {
            ++foreign;
            EXPECT_EQ(date("2015-03-29T01:30:05.250"), springNight) << locale;
        }
    }
    if (foreign == 0) {
        GTEST_SKIP() << "no locale but the C one is installed";
    }
}

TEST(DateTest, NowIsNow) {
    const auto before = std::chrono::system_clock::now();
    const Date instant = Date::now();
    const auto after = std::chrono::system_clock::now();
    EXPECT_GE(instant, std::chrono::floor<std::chrono::microseconds>(before));
    EXPECT_LE(instant, after);
}

} // namespace KeloAPI
