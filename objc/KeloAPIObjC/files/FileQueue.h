#import <KeloAPIObjC/bridge/KLBlocks.h>
#import <KeloAPIObjC/bridge/KLBridged.h>
#import <KeloAPIObjC/files/QueuePriority.h>

@class FileDownloadResult, FileEndpoint;

/// Downloads files one after another, the most wanted first, for a named group of callers. A file
/// that is requested again keeps one place, by the latest priority, and one destination, the
/// latest.
///
/// Requests may come from any thread, `withKey:` and `kill` from one. Actions take a
/// `FileDownloadResult`.
@interface FileQueue : KLBridged

/// The one queue of that key, made at the first request.
+ (FileQueue *)withKey:(NSString *)key;
/// Not offered: stops the process.
- (instancetype)init;

/// Requests a file at the low priority.
- (void)download:(FileEndpoint *)endpoint to:(NSURL *)url target:(id)target action:(SEL)action;
/// Requests that the file be at the file URL `url`. A file that is there already is answered at
/// once on this thread. Otherwise the action is called on the main queue, exactly once unless the
/// queue is killed or gone before. A nil endpoint, and a number that is no priority, raise
/// `NSInvalidArgumentException`.
- (void)download:(FileEndpoint *)endpoint
              to:(NSURL *)url
        priority:(QueuePriority)priority
          target:(id)target
          action:(SEL)action;

#if __has_feature(blocks)
- (void)download:(FileEndpoint *)endpoint
              to:(NSURL *)url
      completion:(void (^)(FileDownloadResult *result))completion;
- (void)download:(FileEndpoint *)endpoint
              to:(NSURL *)url
        priority:(QueuePriority)priority
      completion:(void (^)(FileDownloadResult *result))completion;
#endif

/// Drops all requests, whose actions are never called, and forgets the queue. A running transfer
/// goes on to its end.
- (void)kill;

/// The file being downloaded, or next to be, and behind it those that wait, in their order.
@property(nonatomic, readonly) NSArray *queuedFiles;

@end
