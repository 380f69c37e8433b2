#import <KeloAPIObjC/loops/KLEndlessLikesRange.h>

#include <KeloAPI/model/KLEndlessLikesRange.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>

using namespace KeloBridge;
using LikesRange = KeloAPI::KLEndlessLikesRange;

@implementation KLEndlessLikesRange

+ (void)load {
    add<LikesRange>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.KLEndlessLikesRange");
}

- (instancetype)initWithCount:(double)count
                        start:(double)start
                          end:(double)end
                        level:(double)level {
    self = [super init];
    return self == nil ? nil : hold(self, std::make_shared<LikesRange>(count, start, end, level));
}

- (double)count {
    return held<LikesRange>(self).count();
}

- (double)startTime {
    return held<LikesRange>(self).startTime();
}

- (double)endTime {
    return held<LikesRange>(self).endTime();
}

- (double)level {
    return held<LikesRange>(self).level();
}

@end
