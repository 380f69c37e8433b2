#pragma once

#import <KeloAPIObjC/api/Session.h>

#include <KeloAPI/api/Session.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>

namespace KeloBridge {

/// A number that is no type raises `NSInvalidArgumentException`.
inline KeloAPI::SessionType nativeType(SessionType type) {
    return requiredCase<KeloAPI::SessionType>(type, SessionTypeUnAuthenticated, @"session type");
}

} // namespace KeloBridge
