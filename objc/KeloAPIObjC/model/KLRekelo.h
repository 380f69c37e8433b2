#import <KeloAPIObjC/bridge/KLBridged.h>

@class KLWatchUser;

/// A user's repost of a post. One thread at a time.
@interface KLRekelo : KLBridged

/// Without any value.
- (instancetype)init;

/// "repostId", sent as a number or as text; in a post's `currentUserRekelo`, the number under the
/// post's "myRepostId".
@property(nonatomic, copy) NSString *rekeloId;
/// Who reposted; nil where nothing told.
@property(nonatomic, retain) KLWatchUser *user;

@end
