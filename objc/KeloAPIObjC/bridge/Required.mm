#include <KeloAPIObjC/bridge/Required.hpp>

#include <KeloAPI/base/Contract.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

#include <string>

namespace KeloBridge {

void requireArgument(id value, NSString *name) {
    if (value == nil) {
        [NSException raise:NSInvalidArgumentException format:@"the argument %@ is nil", name];
    }
}

KeloAPI::URL requiredURL(NSURL *address, NSString *name) {
    requireArgument(address, name);
    const auto known = optionalURL(address);
    if (!known) {
        [NSException raise:NSInvalidArgumentException
                    format:@"the argument %@ is no URL: %@", name, address];
    }
    return *known;
}

KeloAPI::Number requiredNumber(NSNumber *value, NSString *name) {
    requireArgument(value, name);
    return number(value);
}

KeloAPI::Date requiredDate(NSDate *instant, NSString *name) {
    requireArgument(instant, name);
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

void unimplemented(const char *initialiser, const char *className) {
    KeloAPI::contractViolation(std::string("unimplemented initialiser ") + initialiser +
                               " of class " + className);
}

void refuse(id object, const char *initialiser) {
    const std::string name = class_getName(libraryClass([object class]));
    const std::string module = "KeloAPI.";
    unimplemented(initialiser, (name.starts_with(module) ? name : module + name).c_str());
}

} // namespace KeloBridge
