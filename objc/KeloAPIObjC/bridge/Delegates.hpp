#pragma once

#import <KeloAPIObjC/api/SessionDelegate.h>

#include <KeloAPI/api/SessionDelegate.hpp>

#include <memory>

namespace KeloBridge {

/// Named here, where no C++ class of that name is in the way.
using DelegateObject = id<SessionDelegate>;

/// The C++ delegate that asks `delegate` without keeping it alive: the same one while `delegate`
/// lives, and gone with it. Null for nil.
std::shared_ptr<KeloAPI::SessionDelegate> sessionDelegate(DelegateObject delegate);

/// The Objective-C delegate that a C++ one asks; nil for any other.
DelegateObject sessionDelegate(const std::shared_ptr<KeloAPI::SessionDelegate> &delegate);

} // namespace KeloBridge
