#import <KeloAPIObjC/endpoints/TimelineEndpoint.h>

#include <KeloAPI/endpoints/TimelineEndpoint.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Completion.hpp>
#include <KeloAPIObjC/bridge/HostEndpoint.hpp>
#include <KeloAPIObjC/bridge/Lists.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Native = KeloAPI::TimelineEndpoint;

namespace {

TimelineResult *resultOf(const KeloAPI::TimelineResult &result) {
    if (result.error() != nullptr) {
        return [[[TimelineResult alloc] initWithContent:nil
                                                  error:error(*result.error())] autorelease];
    }
    const auto &page = *result.success();
    return [[[TimelineResult alloc] initWithPosts:array(page.posts)
                                         nextPage:wrap(page.nextPage)
                                     previousPage:wrap(page.previousPage)] autorelease];
}

void fetch(TimelineEndpoint *endpoint, const Completion &heard) {
    held<Native>(endpoint).fetch([heard](const KeloAPI::TimelineResult &result) {
        const Pool pool;
        heard(resultOf(result));
    });
}

} // namespace

@implementation TimelineResult

- (instancetype)initWithPosts:(NSArray *)posts
                     nextPage:(TimelineEndpoint *)nextPage
                 previousPage:(TimelineEndpoint *)previousPage {
    self = [super initWithContent:posts error:nil];
    if (self != nil) {
        _nextPage = [nextPage retain];
        _previousPage = [previousPage retain];
    }
    return self;
}

- (void)dealloc {
    [_nextPage release];
    [_previousPage release];
    [super dealloc];
}

- (NSArray *)posts {
    return [self content];
}

- (TimelineEndpoint *)nextPage {
    return _nextPage;
}

- (TimelineEndpoint *)previousPage {
    return _previousPage;
}

@end

@implementation TimelineEndpoint

+ (void)load {
    add<Native>(self);
}

- (instancetype)initWithPath:(NSString *)path {
    return hold(self, makeEndpoint<Native>(text(path)));
}

- (instancetype)initWithSession:(Session *)session {
    return holdMade(self, [&] { return makeEndpoint<Native>(shared<KeloAPI::Session>(session)); });
}

- (void)fetchWithTarget:(id)target action:(SEL)action {
    fetch(self, Completion(target, action));
}

- (void)fetch:(KELO_BLOCK(TimelineResult *))completion {
    fetch(self, Completion(completion));
}

@end
