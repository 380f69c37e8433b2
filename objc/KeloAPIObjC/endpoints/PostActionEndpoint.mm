#import <KeloAPIObjC/endpoints/PostActionEndpoint.h>

#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/PostActions.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>

using namespace KeloBridge;
using Parser = KeloAPI::AnyObjectJsonParser;
using Native = KeloAPI::PostActionEndpoint<Parser>;

static void toggle(PostActionEndpoint *endpoint, BOOL on, const Completion &heard) {
    [[endpoint class] postAction].toggle(held<Object>(endpoint), on, heard);
}

@implementation PostActionResult

- (id)item {
    return [self content];
}

@end

@implementation PostActionEndpoint

+ (void)load {
    add<Native>(self);
}

+ (PostAction)postAction {
    return postAction<Native, Object>();
}

- (instancetype)initWithPost:(KLWatchPost *)post parser:(AnyObjectJsonParser *)parser {
    return holdMade(self, [&] {
        return makePostAction<Native>(sharedAlone<KeloAPI::KLWatchPost>(post),
                                      shared<Parser>(parser));
    });
}

- (instancetype)initWithSession:(Session *)session {
    unimplemented("init(session:)", "KeloAPI.PostActionEndpoint");
}

- (KLWatchPost *)post {
    return [[self class] postAction].post(held<Object>(self));
}

- (void)setPathForOn:(BOOL)on {
    [[self class] postAction].setPath(held<Object>(self), on);
}

- (void)toggleOn:(BOOL)on target:(id)target action:(SEL)action {
    toggle(self, on, Completion(target, action));
}

- (void)toggleOn:(BOOL)on completion:(KELO_BLOCK(PostActionResult *))completion {
    toggle(self, on, Completion(completion));
}

@end
