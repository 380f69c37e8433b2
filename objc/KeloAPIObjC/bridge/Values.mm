#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace KeloBridge {

using namespace KeloAPI;

namespace {

constexpr std::int64_t microsecondsPerSecond = 1000000;
/// From 1970 to the reference date of the Foundation.
constexpr std::int64_t referenceSeconds = 978307200;

/// UTF-8 that the Foundation refuses, made readable the way the library's own readers do.
NSString *lenientString(std::string_view text) {
    NSMutableString *whole = [NSMutableString string];
    while (!text.empty()) {
        std::size_t length = std::min<std::size_t>(text.size(), 4);
        NSString *next = nil;
        for (; length > 0 && next == nil; --length) {
            next = [[[NSString alloc] initWithBytes:text.data()
                                             length:length
                                           encoding:NSUTF8StringEncoding] autorelease];
        }
        [whole appendString:next == nil ? @"\uFFFD" : next];
        text.remove_prefix(next == nil ? 1 : length + 1);
    }
    return whole;
}

// The key of the message is a constant of each Foundation, and not in all of them the same text.

NSString *userInfoKey(const std::string &key) {
    return key == KeloAPI::NSLocalizedDescriptionKey ? ::NSLocalizedDescriptionKey : string(key);
}

std::string userInfoKey(NSString *key) {
    return [key isEqual:(::NSLocalizedDescriptionKey)]
               ? std::string(KeloAPI::NSLocalizedDescriptionKey)
               : text(key);
}

Error::Value userInfoValue(id value) {
    if ([value isKindOfClass:[NSNumber class]]) {
        return number(static_cast<NSNumber *>(value));
    }
    if ([value isKindOfClass:[NSURL class]]) {
        if (const auto known = optionalURL(static_cast<NSURL *>(value))) {
            return *known;
        }
    }
    return text([value description]);
}

/// Nil for what the Foundation cannot tell.
id userInfoObject(const Error::Value &value) {
    if (const auto *known = std::get_if<Number>(&value)) {
        return number(*known);
    }
    if (const auto *known = std::get_if<URL>(&value)) {
        return url(std::optional(*known));
    }
    return string(std::get<std::string>(value));
}

/// All digits of a decimal number that GNUstep tells as "1.25E2"; empty where that is no integer of
/// 64 bits.
std::string wholeDigits(const std::string &decimal) {
    const std::size_t mark = std::min(decimal.find('E'), decimal.size());
    std::string digits = decimal.substr(0, mark);
    int zeros = mark < decimal.size() ? std::atoi(decimal.c_str() + mark + 1) : 0;
    if (const std::size_t point = digits.find('.'); point != std::string::npos) {
        digits.erase(point, 1);
        zeros -= static_cast<int>(digits.size() - point);
    }
    constexpr int most = 20;
    return zeros < 0 || zeros > most ? std::string() : digits + std::string(zeros, '0');
}

/// The integer that a decimal number is; absent for others.
std::optional<Number> decimalInteger(NSNumber *number) {
    if (![number isKindOfClass:[NSDecimalNumber class]]) {
        return std::nullopt;
    }
    const std::string digits = wholeDigits(text([number stringValue]));
    const char *const end = digits.data() + digits.size();
    const auto read = [&](auto made) -> std::optional<Number> {
        const auto [last, failure] = std::from_chars(digits.data(), end, made);
        return last == end && failure == std::errc() ? std::optional(Number::of(made))
                                                     : std::nullopt;
    };
    const auto known = read(std::int64_t{});
    return known ? known : read(std::uint64_t{});
}

} // namespace

NSString *string(std::string_view text) {
    NSString *made = [[[NSString alloc] initWithBytes:text.data()
                                               length:text.size()
                                             encoding:NSUTF8StringEncoding] autorelease];
    return made == nil ? lenientString(text) : made;
}

NSString *string(const std::string &text) {
    return string(std::string_view(text));
}

NSString *string(const std::optional<std::string> &text) {
    return text ? string(*text) : nil;
}

std::string text(NSString *string) {
    NSData *bytes = [string dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
    return bytes == nil ? std::string()
                        : std::string(static_cast<const char *>([bytes bytes]), [bytes length]);
}

std::optional<std::string> optionalText(NSString *string) {
    return string == nil ? std::nullopt : std::optional(text(string));
}

NSNumber *number(const Number &number) {
    switch (number.kind()) {
    case Number::Kind::Boolean:
        return [NSNumber numberWithBool:number.boolValue()];
    case Number::Kind::Signed:
        return [NSNumber numberWithLongLong:number.int64Value()];
    case Number::Kind::Unsigned:
        return [NSNumber numberWithUnsignedLongLong:number.uint64Value()];
    case Number::Kind::Double:
        break;
    }
    return [NSNumber numberWithDouble:number.doubleValue()];
}

NSNumber *number(const std::optional<Number> &value) {
    return value ? number(*value) : nil;
}

Number number(NSNumber *number) {
    // The Foundation has two objects for the booleans, and a small integer has their type, too.
    if (number == [NSNumber numberWithBool:YES] || number == [NSNumber numberWithBool:NO]) {
        return Number::of(static_cast<bool>([number boolValue]));
    }
    if (const auto known = decimalInteger(number)) {
        return *known;
    }
    const char *type = [number objCType];
    if (std::strcmp(type, @encode(double)) == 0 || std::strcmp(type, @encode(float)) == 0) {
        return Number::of([number doubleValue]);
    }
    if (std::strcmp(type, @encode(unsigned long long)) == 0 ||
        std::strcmp(type, @encode(unsigned long)) == 0) {
        return Number::of(static_cast<std::uint64_t>([number unsignedLongLongValue]));
    }
    return Number::of(static_cast<std::int64_t>([number longLongValue]));
}

// By the reference date, from which the Foundation counts: so a date reads back as it was.

NSDate *date(Date date) {
    const std::int64_t microseconds = date.time_since_epoch().count();
    std::int64_t seconds = microseconds / microsecondsPerSecond - referenceSeconds;
    std::int64_t rest = microseconds % microsecondsPerSecond;
    if (seconds < 0 && rest > 0) {
        ++seconds;
        rest -= microsecondsPerSecond;
    }
    return [NSDate
        dateWithTimeIntervalSinceReferenceDate:static_cast<double>(seconds) +
                                               static_cast<double>(rest) / microsecondsPerSecond];
}

NSDate *date(const std::optional<Date> &value) {
    return value ? date(*value) : nil;
}

Date date(NSDate *date) {
    const double told = [date timeIntervalSinceReferenceDate] * microsecondsPerSecond;
    constexpr double most = 9.2e18;
    return Date(std::chrono::microseconds(std::llround(std::fmin(std::fmax(told, -most), most)))) +
           std::chrono::seconds(referenceSeconds);
}

NSError *error(const Error &failure) {
    NSMutableDictionary *userInfo = [NSMutableDictionary dictionary];
    for (const auto &[key, value] : failure.userInfo()) {
        if (id object = userInfoObject(value)) {
            [userInfo setObject:object forKey:userInfoKey(key)];
        }
    }
    if (const auto &underlying = failure.underlying()) {
        [userInfo setObject:error(*underlying) forKey:NSUnderlyingErrorKey];
    }
    return [NSError errorWithDomain:string(failure.domain())
                               code:static_cast<NSInteger>(failure.code())
                           userInfo:userInfo];
}

NSError *error(const std::optional<Error> &failure) {
    return failure ? error(*failure) : nil;
}

Error error(NSError *failure) {
    Error::UserInfo userInfo;
    std::optional<Error> underlying;
    NSDictionary *facts = [failure userInfo];
    NSEnumerator *keys = [facts keyEnumerator];
    for (id key = [keys nextObject]; key != nil; key = [keys nextObject]) {
        id fact = [facts objectForKey:key];
        if ([key isEqual:NSUnderlyingErrorKey] && [fact isKindOfClass:[NSError class]]) {
            underlying = error(static_cast<NSError *>(fact));
        } else if ([key isKindOfClass:[NSString class]]) {
            userInfo.emplace(userInfoKey(static_cast<NSString *>(key)), userInfoValue(fact));
        }
    }
    return Error(text([failure domain]), [failure code], std::move(userInfo), underlying);
}

} // namespace KeloBridge
