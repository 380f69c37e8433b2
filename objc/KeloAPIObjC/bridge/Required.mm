#include <KeloAPIObjC/bridge/Required.hpp>

#include <KeloAPI/base/Contract.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

#include <string>

namespace KeloBridge {

KeloAPI::URL requiredURL(NSURL *address) {
    const auto known = optionalURL(address);
    if (!known) {
        [NSException raise:NSInvalidArgumentException format:@"no URL: %@", address];
    }
    return *known;
}

KeloAPI::Number requiredNumber(NSNumber *value) {
    if (value == nil) {
        [NSException raise:NSInvalidArgumentException format:@"there must be a number"];
    }
    return number(value);
}

KeloAPI::Date requiredDate(NSDate *instant) {
    if (instant == nil) {
        [NSException raise:NSInvalidArgumentException format:@"there must be a date"];
    }
    return date(instant);
}

std::optional<bool> optionalBool(NSNumber *value) {
    return value == nil ? std::nullopt : std::optional([value boolValue] != NO);
}

std::optional<double> optionalDouble(NSNumber *value) {
    return value == nil ? std::nullopt : std::optional([value doubleValue]);
}

std::optional<std::int64_t> optionalInteger(NSNumber *value) {
    return value == nil ? std::nullopt : std::optional(number(value).int64Value());
}

std::optional<KeloAPI::Date> optionalDate(NSDate *instant) {
    return instant == nil ? std::nullopt : std::optional(date(instant));
}

NSNumber *number(const std::optional<double> &value) {
    return value ? [NSNumber numberWithDouble:*value] : nil;
}

NSNumber *number(const std::optional<std::int64_t> &value) {
    return value ? [NSNumber numberWithLongLong:*value] : nil;
}

void unimplemented(const char *initialiser, const char *className) {
    KeloAPI::contractViolation(std::string("unimplemented initialiser ") + initialiser +
                               " of class " + className);
}

} // namespace KeloBridge
