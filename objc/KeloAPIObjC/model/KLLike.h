#import <KeloAPIObjC/bridge/KLBridged.h>

@class KLWatchUser;

/// A user's like of a post. One thread at a time.
@interface KLLike : KLBridged

/// Without any value.
- (instancetype)init;

/// "likeId", sent as a number or as text.
@property(nonatomic, copy) NSString *likeId;
/// Who likes; nil where nothing told.
@property(nonatomic, retain) KLWatchUser *user;

@end
