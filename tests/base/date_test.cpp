#include "support/Words.hpp"

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
    const std::pair<const char*, Date> table[] = {
        {"2015-03-29T01:30:05.250", springNight},
        {"2015-03-29T01:30:5.250", springNight},
        {"2015-03-29T01:30:0.000", springNight - 5s - 250ms},
        // A fraction is truncated to milliseconds.
        {"2015-03-29T01:30:05.2", springNight - 50ms},
        {"2015-03-29T01:30:05.25", springNight},
        {"2015-03-29T01:30:05.250000", springNight},
        {"2015-03-29T01:30:05.2509", springNight},
        {"2015-03-29T01:30:05.1999", springNight - 51ms},
        {"2015-03-29T01:30:05.001", springNight - 249ms},
        {"2015-03-29T01:30:05.0009", springNight - 250ms},
        {"2015-03-29T01:30:05.0", springNight - 250ms},
        {"2015-03-29T01:30:05.00000000000000000000000000000001", springNight - 250ms},
        {"2015-03-29T01:30:05.999999999", springNight + 749ms},
        {"2015-06-01T08:09:10.500", sys_days(2015y / 6 / 1) + 8h + 9min + 10s + 500ms},
        {"1970-01-01T00:00:00.000", Date()},
        {"1969-12-31T23:59:59.999", Date() - 1ms},
        {"0001-01-01T00:00:00.0", sys_days(1y / 1 / 1)},
        {"9999-12-31T23:59:59.999", sys_days(9999y / 12 / 31) + 24h - 1ms},
        {"2016-02-29T00:00:00.0", sys_days(2016y / 2 / 29)},
        {"2000-02-29T00:00:00.0", sys_days(2000y / 2 / 29)},
    };
    for (const auto& [text, expected] : table) {
        EXPECT_EQ(date(text), expected) << text;
    }
}

TEST(DateTest, RefusesDaysAndTimesThatAreNone) {
    for (const std::string& day :
         testing::wordsOf("2015-02-29 1900-02-29 2015-02-30 2015-04-31"
                          " 2015-13-01 2015-00-01 2015-01-00 2015-01-32")) {
        EXPECT_EQ(date(day + "T00:00:00.0"), std::nullopt) << day;
    }
    for (const std::string& time :
         testing::wordsOf("24:00:00.0 00:60:00.0 00:00:60.0 00:00:99.0")) {
        EXPECT_EQ(date("2015-01-01T" + time), std::nullopt) << time;
    }
}

TEST(DateTest, RefusesEverythingElse) {
    for (const std::string& text : testing::wordsOf(R"(
             2015 2015-03-01 garbage
             2015-03-01T12:30:05 2015-03-01T12:30:05. 2015-03-01T12:30:005.250 2015-03-01T12:30:.250
             2015-03-01t12:30:05.250 2015-03-01T12:30:05.250Z 2015-03-01T12:30:05.250+00:00
             2015-03-01T12:30:05,250 2015-03-01T12:30:05.25x 2015/03/01T12:30:05.250
             15-03-01T12:30:05.250 12015-03-01T12:30:05.250 -2015-03-01T12:30:05.250
             +2015-03-01T12:30:05.250 2015-03-01T-2:30:05.250 2015-03-01T12:30:-5.250
             2015-03-01T12:30:05.-25 20a5-03-01T12:30:05.250 2015-03-01T12-30-05.250
             2015-03-01T12:3005.250)")) {
        EXPECT_EQ(date(text), std::nullopt) << text;
    }
    for (const std::string_view text :
         {"", " ", "2015-03-01 12:30:05.250", "2015-03-01T12:30:05.250 ",
          " 2015-03-01T12:30:05.250", "2015-03-01T12:30:05.250\n",
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
        foreign += surroundings.localeExists() ? 1 : 0;
        EXPECT_EQ(date("2015-03-29T01:30:05.250"), springNight) << locale;
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
