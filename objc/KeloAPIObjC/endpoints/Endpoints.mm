#import <KeloAPIObjC/endpoints/MeEndpoint.h>
#import <KeloAPIObjC/endpoints/RecommendationsEndpoint.h>
#import <KeloAPIObjC/endpoints/SoundboardEndpoint.h>
#import <KeloAPIObjC/endpoints/TimelineEndpoint.h>
#import <KeloAPIObjC/endpoints/UserEndpoint.h>

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/MeEndpoint.hpp>
#include <KeloAPI/endpoints/RecommendationsEndpoint.hpp>
#include <KeloAPI/endpoints/SoundboardEndpoint.hpp>
#include <KeloAPI/endpoints/TimelineEndpoint.hpp>
#include <KeloAPI/endpoints/UserEndpoint.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>
#include <KeloAPIObjC/bridge/Calls.hpp>
#include <KeloAPIObjC/bridge/HostEndpoint.hpp>
#include <KeloAPIObjC/bridge/RuntimeName.hpp>
#include <KeloAPIObjC/bridge/Table.hpp>

using namespace KeloBridge;

namespace {

std::shared_ptr<KeloAPI::Session> authenticated() {
    return KeloAPI::Api::session(KeloAPI::SessionType::Authenticated);
}

id timelineResult(const KeloAPI::TimelineResult &result) {
    if (result.error() != nullptr) {
        return toResult([TimelineResult class], result.error(), nil);
    }
    const auto &page = *result.success();
    return [[[TimelineResult alloc] initWithPosts:toObjC(page.posts)
                                         nextPage:toObjC(page.nextPage)
                                     previousPage:toObjC(page.previousPage)] autorelease];
}

KeloAPI::RecommendationBoost requiredBoost(RecommendationBoost boost) {
    return requiredCase<KeloAPI::RecommendationBoost>(boost, RecommendationBoostNegative, @"boost");
}

/// Tells an outcome that brings nothing.
auto tellingSuccess(const Completion &heard, Class made) {
    return tellingOutcome(heard, made, [](const auto &) { return std::shared_ptr<Object>(); });
}

} // namespace

@implementation MeResult

- (KLWatchUser *)user {
    return [self content];
}

@end

@implementation MeEndpoint

KELO_STANDS_FOR(MeEndpoint, KeloAPI::MeEndpoint, nameAtRuntime(self, "KeloAPI.MeEndpoint"))
KELO_INIT_WITH_SESSION()
KELO_CALLS(void, (), getWithTarget, get,
           native(self).get(tellingOutcome(heard, [MeResult class],
                                           [](const KeloAPI::MeResult &result) {
                                               return result.success()->user;
                                           })))

- (instancetype)init {
    return KELO_MAKE_ENDPOINT(authenticated());
}

@end

@implementation UserResult
@end

@implementation UserEndpoint

KELO_STANDS_FOR(UserEndpoint, KeloAPI::UserEndpoint)
KELO_READS(NSString *, userId)
KELO_CALLS(void, (setFollowingOnTwitter, BOOL, following), target, completion,
           native(self).setFollowingOnTwitter(following, tellingSuccess(heard, [UserResult class])))

- (instancetype)initWithUserId:(NSString *)userId {
    return KELO_MAKE_ENDPOINT(authenticated(), text(userId));
}

- (instancetype)initWithSession:(Session *)session userId:(NSString *)userId {
    return KELO_MAKE_ENDPOINT(required<KeloAPI::Session>(session, @"session"), text(userId));
}

- (instancetype)initWithSession:(Session *)session {
    return [self initWithSession:session userId:@""];
}

@end

@implementation SoundboardEndpoint

KELO_STANDS_FOR(SoundboardEndpoint, KeloAPI::SoundboardEndpoint)
KELO_INIT_WITH_SESSION()
KELO_CALLS(id<EndpointRequest>, (), fetchSoundsWithTarget, fetchSoundsWithCompletion,
           toObjC(native(self).fetchSounds(Telling{heard})))

@end

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

KELO_STANDS_FOR(TimelineEndpoint, KeloAPI::TimelineEndpoint)
KELO_INIT_WITH_SESSION()
KELO_CALLS(void, (), fetchWithTarget, fetch, native(self).fetch(telling(heard, timelineResult)))

- (instancetype)initWithPath:(NSString *)path {
    return KELO_MAKE_ENDPOINT(text(path));
}

@end

@implementation RecommendationResult
@end

@implementation RecommendationsEndpoint

KELO_STANDS_FOR(RecommendationsEndpoint, KeloAPI::RecommendationsEndpoint)
KELO_REFUSES("init(session:)", initWithSession, Session *, session)
KELO_CALLS(void, (addUserFeedback, NSString *, userId, boost, RecommendationBoost, boost), target,
           completion,
           native(self).addUserFeedback(text(userId), requiredBoost(boost),
                                        tellingSuccess(heard, [RecommendationResult class])))
KELO_CALLS(void, (addPostFeedback, NSString *, postId, boost, RecommendationBoost, boost), target,
           completion,
           native(self).addPostFeedback(text(postId), requiredBoost(boost),
                                        tellingSuccess(heard, [RecommendationResult class])))

+ (NSString *)rawValueOfBoost:(RecommendationBoost)boost {
    const auto known =
        optionalCase<KeloAPI::RecommendationBoost>(boost, RecommendationBoostNegative);
    return known ? string(KeloAPI::rawValue(*known)) : nil;
}

+ (NSNumber *)boostWithRawValue:(NSString *)rawValue {
    const auto known = KeloAPI::recommendationBoostOf(text(rawValue));
    return known ? [NSNumber numberWithInteger:static_cast<NSInteger>(*known)] : nil;
}

- (instancetype)init {
    return KELO_MAKE_ENDPOINT();
}

@end
