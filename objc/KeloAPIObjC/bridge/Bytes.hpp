#pragma once

#import <Foundation/Foundation.h>

#include <KeloAPI/base/Data.hpp>

namespace KeloBridge {

/// The same bytes; those of an immutable object are not copied. Nil is no bytes.
KeloAPI::Data bytes(NSData *data);
NSData *bytes(const KeloAPI::Data &data);

} // namespace KeloBridge
