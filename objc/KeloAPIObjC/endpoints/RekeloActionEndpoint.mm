#import <KeloAPIObjC/endpoints/RekeloActionEndpoint.h>

#include <KeloAPI/endpoints/RekeloActionEndpoint.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/PostActions.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>

using namespace KeloBridge;
using Native = KeloAPI::RekeloActionEndpoint;

@implementation RekeloActionEndpoint

+ (void)load {
    add<Native>(self);
}

+ (PostAction)postAction {
    return postAction<Native, KeloAPI::KLRekelo>();
}

- (instancetype)initWithPost:(KLWatchPost *)post {
    return holdMade(
        self, [&] { return makePostAction<Native>(sharedAlone<KeloAPI::KLWatchPost>(post)); });
}

- (instancetype)initWithPost:(KLWatchPost *)post parser:(AnyObjectJsonParser *)parser {
    unimplemented("init(post:parser:)", "KeloAPI.RekeloActionEndpoint");
}

- (instancetype)initWithSession:(Session *)session {
    unimplemented("init(session:)", "KeloAPI.RekeloActionEndpoint");
}

@end
