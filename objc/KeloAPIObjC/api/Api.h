#import <Foundation/Foundation.h>
#import <KeloAPIObjC/api/Session.h>

/// The process's registry of sessions: at most one of each type, living until the process ends. On
/// the main queue's thread.
@interface Api : NSObject

/// The session of this type, made at the first call, with `sessionDelegate` as its delegate.
+ (Session *)session:(SessionType)type;
/// The same with `delegate` as its delegate; nil leaves it without one.
+ (Session *)session:(SessionType)type delegate:(id<SessionDelegate>)delegate;

/// The delegate of sessions that are asked for without one; nil by default.
+ (id<SessionDelegate>)sessionDelegate;
/// Held strongly. Sessions that exist already keep the delegate they have.
+ (void)setSessionDelegate:(id<SessionDelegate>)delegate;

@end
