#pragma once

#import <Foundation/Foundation.h>

#include <KeloAPI/json/Parameters.hpp>

namespace KeloBridge {

/// Texts, numbers, booleans, null, lists and dictionaries as their Foundation counterparts.
NSDictionary *parameters(const KeloAPI::Parameters &parameters);

/// Nil is no parameters. A key that is no text, and a value of another kind, raise
/// `NSInvalidArgumentException`.
KeloAPI::Parameters parameters(NSDictionary *parameters);

} // namespace KeloBridge
