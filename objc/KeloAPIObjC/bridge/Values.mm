#include <KeloAPIObjC/bridge/Values.hpp>

#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>

namespace KeloBridge {

using namespace KeloAPI;

namespace {

constexpr double microsecondsPerSecond = 1e6;

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
        if (const auto known = url(static_cast<NSURL *>(value))) {
            return *known;
        }
    }
    return text([value description]);
}

id userInfoObject(const Error::Value &value) {
    if (const auto *known = std::get_if<Number>(&value)) {
        return number(*known);
    }
    if (const auto *known = std::get_if<URL>(&value)) {
        return url(*known);
    }
    return string(std::get<std::string>(value));
}

NSArray *list(const JsonArray &values) {
    NSMutableArray *made = [NSMutableArray arrayWithCapacity:values.size()];
    for (const JsonValue element : values) {
        [made addObject:value(element)];
    }
    return made;
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

NSDate *date(Date date) {
    return [NSDate dateWithTimeIntervalSince1970:timeIntervalSince1970(date)];
}

NSDate *date(const std::optional<Date> &value) {
    return value ? date(*value) : nil;
}

Date date(NSDate *date) {
    const double microseconds = std::round([date timeIntervalSince1970] * microsecondsPerSecond);
    constexpr double most = 9.2e18;
    const double told = std::fmin(std::fmax(microseconds, -most), most);
    return Date(std::chrono::microseconds(static_cast<std::int64_t>(told)));
}

NSURL *url(const URL &url) {
    return [NSURL URLWithString:string(url.absoluteString())];
}

NSURL *url(const std::optional<URL> &value) {
    return value ? url(*value) : nil;
}

std::optional<URL> url(NSURL *url) {
    return url == nil ? std::nullopt : URL::parse(text([url absoluteString]));
}

NSError *error(const Error &failure) {
    NSMutableDictionary *userInfo = [NSMutableDictionary dictionary];
    for (const auto &[key, value] : failure.userInfo()) {
        [userInfo setObject:userInfoObject(value) forKey:userInfoKey(key)];
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
    for (NSString *key = [keys nextObject]; key != nil; key = [keys nextObject]) {
        id fact = [facts objectForKey:key];
        if ([key isEqual:NSUnderlyingErrorKey] && [fact isKindOfClass:[NSError class]]) {
            underlying = error(static_cast<NSError *>(fact));
        } else {
            userInfo.emplace(userInfoKey(key), userInfoValue(fact));
        }
    }
    return Error(text([failure domain]), [failure code], std::move(userInfo), underlying);
}

id value(JsonValue value) {
    if (const auto known = value.text()) {
        return string(*known);
    }
    if (const auto known = value.number()) {
        return number(*known);
    }
    if (const auto known = value.object()) {
        return dictionary(*known);
    }
    if (const auto known = value.array()) {
        return list(*known);
    }
    return [NSNull null];
}

NSDictionary *dictionary(const JsonObject &object) {
    NSMutableDictionary *made = [NSMutableDictionary dictionaryWithCapacity:object.size()];
    for (const auto &[key, member] : object) {
        NSString *name = string(key);
        if ([made objectForKey:name] == nil) { // the first one counts
            [made setObject:value(member) forKey:name];
        }
    }
    return made;
}

JsonDocument document(NSDictionary *dictionary) {
    // Foundation raises for what JSON cannot tell; GNUstep's only says no.
    NSData *bytes = nil;
    if (dictionary != nil && [NSJSONSerialization isValidJSONObject:dictionary]) {
        bytes = [NSJSONSerialization dataWithJSONObject:dictionary options:0 error:nullptr];
    }
    auto parsed = bytes == nil ? Result<JsonDocument>(Error(JsonDocument::errorDomain, 0))
                               : JsonDocument::parse({static_cast<const char *>([bytes bytes]),
                                                      static_cast<std::size_t>([bytes length])});
    if (!parsed) {
        [NSException raise:NSInvalidArgumentException format:@"no JSON object: %@", dictionary];
    }
    return std::move(parsed.value());
}

} // namespace KeloBridge
