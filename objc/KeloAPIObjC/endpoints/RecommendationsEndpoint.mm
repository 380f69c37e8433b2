#import <KeloAPIObjC/endpoints/RecommendationsEndpoint.h>

#include <KeloAPI/endpoints/RecommendationsEndpoint.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Completion.hpp>
#include <KeloAPIObjC/bridge/HostEndpoint.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Native = KeloAPI::RecommendationsEndpoint;
using NativeBoost = KeloAPI::RecommendationBoost;

namespace {

bool isBoost(RecommendationBoost boost) {
    return boost >= RecommendationBoostPositive && boost <= RecommendationBoostNegative;
}

NativeBoost requiredBoost(RecommendationBoost boost) {
    return requiredCase<NativeBoost>(boost, RecommendationBoostNegative, @"boost");
}

Native::Completion completionOf(const Completion &heard) {
    return [heard](const KeloAPI::RecommendationResult &result) {
        const Pool pool;
        NSError *failure = result.error() == nullptr ? nil : error(*result.error());
        heard([[[RecommendationResult alloc] initWithContent:nil error:failure] autorelease]);
    };
}

} // namespace

@implementation RecommendationResult
@end

@implementation RecommendationsEndpoint

+ (void)load {
    add<Native>(self);
}

+ (NSString *)rawValueOfBoost:(RecommendationBoost)boost {
    return isBoost(boost) ? string(KeloAPI::rawValue(static_cast<NativeBoost>(boost))) : nil;
}

+ (NSNumber *)boostWithRawValue:(NSString *)rawValue {
    const auto known = KeloAPI::recommendationBoostOf(text(rawValue));
    return known ? [NSNumber numberWithInteger:static_cast<NSInteger>(*known)] : nil;
}

- (instancetype)init {
    return hold(self, makeEndpoint<Native>());
}

- (instancetype)initWithSession:(Session *)session {
    unimplemented("init(session:)", "KeloAPI.RecommendationsEndpoint");
}

- (void)addUserFeedback:(NSString *)userId
                  boost:(RecommendationBoost)boost
                 target:(id)target
                 action:(SEL)action {
    held<Native>(self).addUserFeedback(text(userId), requiredBoost(boost),
                                       completionOf(Completion(target, action)));
}

- (void)addUserFeedback:(NSString *)userId
                  boost:(RecommendationBoost)boost
             completion:(KELO_BLOCK(RecommendationResult *))completion {
    held<Native>(self).addUserFeedback(text(userId), requiredBoost(boost),
                                       completionOf(Completion(completion)));
}

- (void)addPostFeedback:(NSString *)postId
                  boost:(RecommendationBoost)boost
                 target:(id)target
                 action:(SEL)action {
    held<Native>(self).addPostFeedback(text(postId), requiredBoost(boost),
                                       completionOf(Completion(target, action)));
}

- (void)addPostFeedback:(NSString *)postId
                  boost:(RecommendationBoost)boost
             completion:(KELO_BLOCK(RecommendationResult *))completion {
    held<Native>(self).addPostFeedback(text(postId), requiredBoost(boost),
                                       completionOf(Completion(completion)));
}

@end
