#import <KeloAPIObjC/bridge/KLBridged.h>

@class KLLoopData;

/// What a watch screen needs of a user. One thread at a time.
@interface KLWatchUser : KLBridged

/// Without any value.
- (instancetype)init;

/// "username"; nil where that was no text.
@property(nonatomic, copy) NSString *username;
/// The user's loop counter, from "loopCount" and "loopVelocity"; nil when there is none.
@property(nonatomic, retain) KLLoopData *loopData;

@end
