#import <KeloAPIObjC/api/Endpoint.h>
#import <KeloAPIObjC/api/EndpointResult.h>

/// Whether the user wants more, the same or less of something recommended.
typedef NS_ENUM(NSInteger, RecommendationBoost) {
    RecommendationBoostPositive = 0,
    RecommendationBoostNeutral = 1,
    RecommendationBoostNegative = 2,
};

/// How feedback ended: with the error, or with nothing to add.
@interface RecommendationResult : EndpointResult
@end

/// Sends feedback on recommendations: POST recommendations/feedback/users/ or .../posts/ and an id,
/// with a JSON body whose one key is "recommendationBoost".
@interface RecommendationsEndpoint : Endpoint

/// The boost's text on the wire: "positive", "neutral", "negative"; nil for any other number.
+ (NSString *)rawValueOfBoost:(RecommendationBoost)boost;
/// The boost with this text, to the letter, as an NSNumber; nil for any other.
+ (NSNumber *)boostWithRawValue:(NSString *)rawValue;

/// On the authenticated session, with `Api.sessionDelegate`.
- (instancetype)init;
/// Not offered: stops the process.
- (instancetype)initWithSession:(Session *)session;

/// Sends feedback on a recommended user. The id goes into the path as given. `action` takes a
/// `RecommendationResult`; without a target the feedback is sent all the same. A number that is no
/// boost raises `NSInvalidArgumentException`.
- (void)addUserFeedback:(NSString *)userId
                  boost:(RecommendationBoost)boost
                 target:(id)target
                 action:(SEL)action;
/// The same for a recommended post.
- (void)addPostFeedback:(NSString *)postId
                  boost:(RecommendationBoost)boost
                 target:(id)target
                 action:(SEL)action;

#if __has_feature(blocks)
/// `completion` may be nil.
- (void)addUserFeedback:(NSString *)userId
                  boost:(RecommendationBoost)boost
             completion:(void (^)(RecommendationResult *result))completion;
- (void)addPostFeedback:(NSString *)postId
                  boost:(RecommendationBoost)boost
             completion:(void (^)(RecommendationResult *result))completion;
#endif

@end
