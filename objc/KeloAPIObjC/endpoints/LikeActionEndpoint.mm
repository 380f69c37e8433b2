#import <KeloAPIObjC/endpoints/LikeActionEndpoint.h>

#include <KeloAPI/endpoints/LikeActionEndpoint.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/PostActions.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>

using namespace KeloBridge;
using Native = KeloAPI::LikeActionEndpoint;

@implementation LikeActionEndpoint

+ (void)load {
    add<Native>(self);
}

+ (PostAction)postAction {
    return postAction<Native, KeloAPI::KLLike>();
}

- (instancetype)initWithPost:(KLWatchPost *)post {
    return holdMade(
        self, [&] { return makePostAction<Native>(sharedAlone<KeloAPI::KLWatchPost>(post)); });
}

- (instancetype)initWithPost:(KLWatchPost *)post parser:(AnyObjectJsonParser *)parser {
    unimplemented("init(post:parser:)", "KeloAPI.LikeActionEndpoint");
}

- (instancetype)initWithSession:(Session *)session {
    unimplemented("init(session:)", "KeloAPI.LikeActionEndpoint");
}

@end
