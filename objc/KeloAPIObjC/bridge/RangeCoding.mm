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

/// Has values read as ranges, as long as it is there: the archive is the host's.
class RangesForValues {
public:
    explicit RangesForValues(NSCoder *coder)
        : _keyed([coder isKindOfClass:[NSKeyedUnarchiver class]]
                     ? static_cast<NSKeyedUnarchiver *>(coder)
                     : nil)
        , _before([_keyed classForClassName:@"NSValue"]) {
        [_keyed setClass:[KLArchivedRange class] forClassName:@"NSValue"];
    }
    RangesForValues(const RangesForValues &) = delete;
    RangesForValues &operator=(const RangesForValues &) = delete;
    ~RangesForValues() { [_keyed setClass:_before forClassName:@"NSValue"]; }

private:
    NSKeyedUnarchiver *const _keyed;
    const Class _before;
};

id decodedValue(NSCoder *coder, NSString *key) {
    const RangesForValues ranges(coder);
    return [coder decodeObjectForKey:key];
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
    id value = decodedValue(coder, key);
    if ([value isKindOfClass:[KLArchivedRange class]]) {
        return static_cast<KLArchivedRange *>(value)->range;
    }
    const bool isRange = [value isKindOfClass:[NSValue class]] &&
                         std::strcmp([value objCType], @encode(NSRange)) == 0;
    return isRange ? std::optional([value rangeValue]) : std::nullopt;
}

} // namespace KeloBridge
