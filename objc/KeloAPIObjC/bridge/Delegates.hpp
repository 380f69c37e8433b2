#pragma once

#import <KeloAPIObjC/api/SessionDelegate.h>

#include <KeloAPI/api/SessionDelegate.hpp>

#include <memory>

namespace KeloBridge {

/// The C++ delegate that asks `delegate` without keeping it alive: the same one while `delegate`
/// lives, and gone with it. Null for nil.
std::shared_ptr<KeloAPI::SessionDelegate> sessionDelegate(id<SessionDelegate> delegate);

/// The Objective-C delegate that a C++ one asks; nil for any other.
id<SessionDelegate> sessionDelegate(const std::shared_ptr<KeloAPI::SessionDelegate> &delegate);

} // namespace KeloBridge
