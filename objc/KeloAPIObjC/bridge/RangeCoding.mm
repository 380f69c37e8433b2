#include <KeloAPIObjC/bridge/RangeCoding.hpp>

#include <cstdint>
#include <cstring>
#include <limits>

/// Stands in for the platform's value in keyed archives: under its name and with its keys.
@interface KLArchivedRange : NSObject <NSCoding> {
@public
    NSRange range;
}
@end

namespace {

constexpr int specialRange = 4;

/// Absent for what is no number from 0 to 2^63 - 1.
std::optional<std::int64_t> decodedCount(NSCoder *coder, NSString *key) {
    id count = [coder decodeObjectForKey:key];
    if (![count isKindOfClass:[NSNumber class]] || [count longLongValue] < 0) {
        return std::nullopt;
    }
    return [count longLongValue];
}

} // namespace

@implementation KLArchivedRange

- (void)encodeWithCoder:(NSCoder *)coder {
    [coder encodeInt:specialRange forKey:@"NS.special"];
    [coder encodeObject:[NSNumber numberWithUnsignedInteger:range.length]
                 forKey:@"NS.rangeval.length"];
    [coder encodeObject:[NSNumber numberWithUnsignedInteger:range.location]
                 forKey:@"NS.rangeval.location"];
}

- (instancetype)initWithCoder:(NSCoder *)coder {
    self = [super init];
    const auto length = decodedCount(coder, @"NS.rangeval.length");
    const auto location = decodedCount(coder, @"NS.rangeval.location");
    if (self == nil || [coder decodeIntForKey:@"NS.special"] != specialRange || !length ||
        !location || *length > std::numeric_limits<std::int64_t>::max() - *location) {
        [self release];
        return nil;
    }
    range = NSMakeRange(static_cast<NSUInteger>(*location), static_cast<NSUInteger>(*length));
    return self;
}

@end

namespace KeloBridge {

void encodeRange(NSCoder *coder, NSRange range, NSString *key) {
    if (![coder isKindOfClass:[NSKeyedArchiver class]]) {
        [coder encodeObject:[NSValue valueWithRange:range] forKey:key];
        return;
    }
    KLArchivedRange *archived = [[KLArchivedRange new] autorelease];
    archived->range = range;
    [static_cast<NSKeyedArchiver *>(coder) setClassName:@"NSValue" forClass:[archived class]];
    [coder encodeObject:archived forKey:key];
}

std::optional<NSRange> decodedRange(NSCoder *coder, NSString *key) {
    NSKeyedUnarchiver *keyed = [coder isKindOfClass:[NSKeyedUnarchiver class]]
                                   ? static_cast<NSKeyedUnarchiver *>(coder)
                                   : nil;
    // Only as long as this value is read: the archive is the host's.
    Class before = [keyed classForClassName:@"NSValue"];
    [keyed setClass:[KLArchivedRange class] forClassName:@"NSValue"];
    id value = [coder decodeObjectForKey:key];
    [keyed setClass:before forClassName:@"NSValue"];
    if ([value isKindOfClass:[KLArchivedRange class]]) {
        return static_cast<KLArchivedRange *>(value)->range;
    }
    const bool isRange = [value isKindOfClass:[NSValue class]] &&
                         std::strcmp([value objCType], @encode(NSRange)) == 0;
    return isRange ? std::optional([value rangeValue]) : std::nullopt;
}

} // namespace KeloBridge
