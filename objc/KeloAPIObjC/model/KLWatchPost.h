#import <KeloAPIObjC/bridge/KLBridged.h>

@class KLRekelo, KLWatchUser;

/// One short looping video, published by a user. A value that is not known is nil. One thread at a
/// time.
@interface KLWatchPost : KLBridged

/// Without any value.
- (instancetype)init;

/// "postId", sent as a number or as text.
@property(nonatomic, copy) NSString *postId;
/// The author.
@property(nonatomic, retain) KLWatchUser *user;
/// "description".
@property(nonatomic, copy) NSString *caption;
/// "created".
@property(nonatomic, copy) NSDate *created;
/// URL of the default rendition, from "videoUrls".
@property(nonatomic, copy) NSString *videoUrl;
/// "thumbnailUrl".
@property(nonatomic, copy) NSString *thumbnailUrl;
/// "liked": whether the signed-in user likes the post.
@property(nonatomic, copy) NSNumber *liked;
/// The signed-in user's repost of the post; nil when there is none.
@property(nonatomic, retain) KLRekelo *currentUserRekelo;
/// Whether the signed-in user has reposted the post.
@property(nonatomic, readonly) BOOL rekeloed;

@end
