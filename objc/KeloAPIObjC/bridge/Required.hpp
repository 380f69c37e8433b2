#pragma once

#import <Foundation/Foundation.h>

#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/base/Number.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

#include <cstdint>
#include <memory>
#include <optional>

/// What must be there where an object is made or changed, and what need not.
namespace KeloBridge {

/// Nil raises `NSInvalidArgumentException` that names the argument; so does what is no URL to the
/// C++ library. An empty URL crosses as one.
KeloAPI::URL requiredURL(NSURL *url, NSString *name);
KeloAPI::Number requiredNumber(NSNumber *number, NSString *name);
KeloAPI::Date requiredDate(NSDate *date, NSString *name);
void requireArgument(id value, NSString *name);

/// The C++ object of class `T`. One of another class raises, too.
template <class T>
std::shared_ptr<T> required(id object, NSString *name) {
    requireArgument(object, name);
    return toNative<T>(object);
}

/// Absent for nil.
std::optional<bool> optionalBool(NSNumber *number);
std::optional<double> optionalDouble(NSNumber *number);
std::optional<std::int64_t> optionalInteger(NSNumber *number);
std::optional<KeloAPI::Date> optionalDate(NSDate *date);
/// An empty URL crosses as one, and what the Foundation alone takes ([ and ] behind the authority,
/// a second "#") is escaped. Absent also for what is no URL to the C++ library all the same, as one
/// with a port above 65535.
std::optional<KeloAPI::URL> optionalURL(NSURL *url);

/// The case of enumeration `To` in the place of `value`; absent for a number beyond `last`, or
/// below 0.
template <class To>
std::optional<To> optionalCase(NSInteger value, NSInteger last) {
    return value < 0 || value > last ? std::nullopt : std::optional(static_cast<To>(value));
}

/// The same; a number that is none raises `NSInvalidArgumentException`, which names `what` it
/// should be.
template <class To>
To requiredCase(NSInteger value, NSInteger last, NSString *what) {
    const auto known = optionalCase<To>(value, last);
    if (!known) {
        [NSException raise:NSInvalidArgumentException
                    format:@"no %@: %ld", what, static_cast<long>(value)];
    }
    return *known;
}

/// Ends the process where an initialiser is called that `className` does not offer; both are named
/// as in the native form, "init()" and "KeloAPI.KLVenue".
[[noreturn]] void unimplemented(const char *initialiser, const char *className);

/// The same of the class of `object`, or the one of this library that it is derived from.
[[noreturn]] void refuse(id object, const char *initialiser);

} // namespace KeloBridge
