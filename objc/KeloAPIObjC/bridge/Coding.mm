#include <KeloAPIObjC/bridge/Coding.hpp>

#include <KeloAPIObjC/bridge/RangeCoding.hpp>
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

void decode(NSCoder *coder, std::string &member, NSString *key) {
    member = decodedText(coder, key).value_or(member);
}

void decode(NSCoder *coder, std::optional<std::string> &member, NSString *key) {
    member = decodedText(coder, key);
}

void decode(NSCoder *coder, std::optional<KeloAPI::URL> &member, NSString *key) {
    member = decodedURL(coder, key);
}

void decode(NSCoder *coder, KeloAPI::Date &member, NSString *key) {
    member = decodedDate(coder, key).value_or(member);
}

void decode(NSCoder *coder, std::optional<KeloAPI::Date> &member, NSString *key) {
    member = decodedDate(coder, key);
}

void decode(NSCoder *coder, bool &member, NSString *key) {
    member = [coder decodeBoolForKey:key] != NO;
}

void decode(NSCoder *coder, double &member, NSString *key) {
    member = [coder decodeDoubleForKey:key];
}

void raiseNotArchived(id object, NSCoder *coder) {
    // GNUstep's archiver releases the dictionary that it is writing into, which it does not own,
    // when it goes after an object has raised.
    if ([coder isKindOfClass:[NSKeyedArchiver class]]) {
        Ivar written = class_getInstanceVariable([NSKeyedArchiver class], "_enc");
        [(written == nullptr ? nil : object_getIvar(coder, written)) retain];
    }
    [NSException raise:NSInvalidArgumentException
                format:@"objects of class %@ are not archived", [object class]];
    __builtin_unreachable();
}

void encode(NSCoder *coder, id value, NSString *key) {
    [coder encodeObject:value forKey:key];
}

void encode(NSCoder *coder, BOOL value, NSString *key) {
    [coder encodeBool:value forKey:key];
}

void encode(NSCoder *coder, double value, NSString *key) {
    [coder encodeDouble:value forKey:key];
}

void encode(NSCoder *coder, int64_t value, NSString *key) {
    [coder encodeInt64:value forKey:key];
}

void encode(NSCoder *coder, NSRange value, NSString *key) {
    encodeRange(coder, value, key);
}

} // namespace KeloBridge
