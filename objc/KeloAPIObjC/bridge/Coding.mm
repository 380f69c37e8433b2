#include <KeloAPIObjC/bridge/Coding.hpp>

#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

namespace KeloBridge {

namespace {

/// Nil for an object of another class.
id decoded(NSCoder *coder, NSString *key, Class expected) {
    id object = [coder decodeObjectForKey:key];
    return [object isKindOfClass:expected] ? object : nil;
}

} // namespace

std::optional<std::string> decodedText(NSCoder *coder, NSString *key) {
    return optionalText(decoded(coder, key, [NSString class]));
}

std::optional<KeloAPI::URL> decodedURL(NSCoder *coder, NSString *key) {
    return optionalURL(decoded(coder, key, [NSURL class]));
}

std::optional<KeloAPI::Date> decodedDate(NSCoder *coder, NSString *key) {
    return optionalDate(decoded(coder, key, [NSDate class]));
}

std::optional<KeloAPI::Number> decodedNumber(NSCoder *coder, NSString *key) {
    NSNumber *value = decoded(coder, key, [NSNumber class]);
    return value == nil ? std::nullopt : std::optional(number(value));
}

} // namespace KeloBridge
