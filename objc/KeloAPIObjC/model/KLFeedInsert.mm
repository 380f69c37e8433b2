#import <KeloAPIObjC/model/KLFeedInsert.h>

#include <KeloAPI/model/KLFeedInsert.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using FeedInsert = KeloAPI::KLFeedInsert;

@implementation KLFeedInsert

+ (void)load {
    add<FeedInsert>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.KLFeedInsert");
}

- (instancetype)initWithReference:(NSString *)reference closeable:(BOOL)closeable {
    self = [super init];
    return self == nil ? nil
                       : hold(self, std::make_shared<FeedInsert>(text(reference), closeable != NO));
}

- (NSString *)reference {
    return string(held<FeedInsert>(self).reference());
}

- (BOOL)closeable {
    return held<FeedInsert>(self).closeable();
}

@end
