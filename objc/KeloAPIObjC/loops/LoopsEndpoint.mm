#import <KeloAPIObjC/loops/LoopsEndpoint.h>

#include <KeloAPI/endpoints/LoopsEndpoint.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/HostEndpoint.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>

using namespace KeloBridge;
using Native = KeloAPI::LoopsEndpoint;

@implementation LoopsEndpoint

+ (void)load {
    add<Native>(self);
}

- (instancetype)init {
    return hold(self, makeEndpoint<Native>());
}

- (instancetype)initWithSession:(Session *)session {
    unimplemented("init(session:)", "KeloAPI.LoopsEndpoint");
}

- (void)submitWithCount:(NSInteger)count post:(KLWatchPost *)post {
    const auto known = shared<KeloAPI::KLWatchPost>(post);
    if (known == nullptr) {
        raiseWrongClass(nil);
    }
    held<Native>(self).submit(count, *known);
}

@end
