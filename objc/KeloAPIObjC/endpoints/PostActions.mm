#import <KeloAPIObjC/endpoints/LikeActionEndpoint.h>
#import <KeloAPIObjC/endpoints/PostActionEndpoint.h>
#import <KeloAPIObjC/endpoints/RekeloActionEndpoint.h>

#include <KeloAPI/endpoints/LikeActionEndpoint.hpp>
#include <KeloAPI/endpoints/RekeloActionEndpoint.hpp>
#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>
#include <KeloAPIObjC/bridge/PostActions.hpp>

using namespace KeloBridge;
using Parser = KeloAPI::AnyObjectJsonParser;

/// An action on one kind of post record: it brings its own parser.
#define KELO_POST_ACTION(Face, Item)                                                               \
    @implementation Face                                                                           \
    KELO_STANDS_FOR(Face, KeloAPI::Face)                                                           \
    KELO_REFUSES("init(session:)", initWithSession, Session *, session)                            \
    KELO_REFUSES("init(post:parser:)", initWithPost, KLWatchPost *, post, parser,                  \
                 AnyObjectJsonParser *, parser)                                                    \
    +(PostAction)postAction {                                                                      \
        return postAction<KeloAPI::Face, KeloAPI::Item>();                                         \
    }                                                                                              \
    -(instancetype)initWithPost : (KLWatchPost *)post {                                            \
        return adoptMade(self, [&] {                                                               \
            return makePostAction<KeloAPI::Face>(toNative<KeloAPI::KLWatchPost>(post));            \
        });                                                                                        \
    }                                                                                              \
    @end

@implementation PostActionResult

- (id)item {
    return [self content];
}

@end

@implementation PostActionEndpoint

KELO_STANDS_FOR(PostActionEndpoint, KeloAPI::PostActionEndpoint<Parser>)
KELO_REFUSES("init(session:)", initWithSession, Session *, session)
KELO_CALLS(void, (toggleOn, BOOL, on), target, completion,
           [[self class] postAction].toggle(held<Object>(self), on, heard))

+ (PostAction)postAction {
    return postAction<KeloAPI::PostActionEndpoint<Parser>, Object>();
}

- (instancetype)initWithPost:(KLWatchPost *)post parser:(AnyObjectJsonParser *)parser {
    return adoptMade(self, [&] {
        return makePostAction<KELO_NATIVE>(toNative<KeloAPI::KLWatchPost>(post),
                                           required<Parser>(parser, @"parser"));
    });
}

- (KLWatchPost *)post {
    return [[self class] postAction].post(held<Object>(self));
}

- (void)setPathForOn:(BOOL)on {
    [[self class] postAction].setPath(held<Object>(self), on);
}

@end

KELO_POST_ACTION(LikeActionEndpoint, KLLike)
KELO_POST_ACTION(RekeloActionEndpoint, KLRekelo)

#undef KELO_POST_ACTION
