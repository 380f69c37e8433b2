#import <KeloAPIObjC/loops/KLLoopData.h>

#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Coding.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using KeloAPI::LoopData;

namespace {

/// GNUstep's archives know signed integers alone: a count from 2^63 on stands there as the negative
/// number of the same bits.
KeloAPI::Number unsignedCount(KeloAPI::Number count) {
    const bool isNegative = count.kind() == KeloAPI::Number::Kind::Signed && count.int64Value() < 0;
    return isNegative ? KeloAPI::Number::of(static_cast<std::uint64_t>(count.int64Value())) : count;
}

/// Null unless count and velocity are there.
std::shared_ptr<LoopData> decodedLoopData(NSCoder *coder) {
    const auto count = decodedNumber(coder, @"count");
    const auto velocity = decodedNumber(coder, @"velocity");
    if (!count || !velocity) {
        return nullptr;
    }
    auto loopData = std::make_shared<LoopData>(unsignedCount(*count), *velocity);
    loopData->created = decodedDate(coder, @"created").value_or(loopData->created);
    loopData->onFire = [coder decodeBoolForKey:@"onFire"] != NO;
    return loopData;
}

} // namespace

@implementation KLLoopData

+ (void)load {
    add<LoopData>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.LoopData");
}

- (instancetype)initWithCount:(NSNumber *)count velocity:(NSNumber *)velocity {
    self = [super init];
    return holdMade(self, [&] {
        return std::make_shared<LoopData>(requiredNumber(count), requiredNumber(velocity));
    });
}

- (instancetype)initWithCoder:(NSCoder *)coder {
    self = [super init];
    return holdMade(self, [&] { return decodedLoopData(coder); });
}

- (void)encodeWithCoder:(NSCoder *)coder {
    [coder encodeObject:number(held<LoopData>(self).count) forKey:@"count"];
    [coder encodeObject:self.velocity forKey:@"velocity"];
    [coder encodeObject:self.created forKey:@"created"];
    [coder encodeBool:self.onFire forKey:@"onFire"];
}

- (NSNumber *)count {
    return number(held<LoopData>(self).count);
}

- (void)setCount:(NSNumber *)count {
    held<LoopData>(self).count = requiredNumber(count);
}

- (NSNumber *)velocity {
    return number(held<LoopData>(self).velocity);
}

- (void)setVelocity:(NSNumber *)velocity {
    held<LoopData>(self).velocity = requiredNumber(velocity);
}

- (NSDate *)created {
    return date(held<LoopData>(self).created);
}

- (void)setCreated:(NSDate *)created {
    held<LoopData>(self).created = requiredDate(created);
}

- (BOOL)onFire {
    return held<LoopData>(self).onFire;
}

- (void)setOnFire:(BOOL)onFire {
    held<LoopData>(self).onFire = onFire != NO;
}

- (uint64_t)loopsSinceCreation {
    return held<LoopData>(self).loopsSinceCreation();
}

- (void)addLoops:(uint64_t)n {
    held<LoopData>(self).addLoops(n);
}

@end
