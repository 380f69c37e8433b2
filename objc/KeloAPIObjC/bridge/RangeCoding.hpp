#pragma once

#import <Foundation/Foundation.h>

#include <optional>

/// Ranges in archives, as values of the platform. Not every Foundation knows keyed archives of
/// those.
namespace KeloBridge {

void encodeRange(NSCoder *coder, NSRange range, NSString *key);

/// Absent for a missing key, for null, for what is of another kind and for a range that ends beyond
/// 2^63 - 1.
std::optional<NSRange> decodedRange(NSCoder *coder, NSString *key);

} // namespace KeloBridge
