#import <KeloAPIObjC/model/KLFeedInsert.h>

/// A prompt that the user may close. Does not change once made.
@interface KLSolicitation : KLFeedInsert

/// Nil for `closeable`, a boolean, is no. `closeUrlPath` may be nil.
- (instancetype)initWithReference:(NSString *)reference
                        closeable:(NSNumber *)closeable
                     closeUrlPath:(NSString *)closeUrlPath;
/// These stop the process.
- (instancetype)init;
- (instancetype)initWithReference:(NSString *)reference closeable:(BOOL)closeable;

/// "closeUrlPath": the path to call when the user dismisses the prompt; nil when there is none.
@property(nonatomic, readonly) NSString *closeUrlPath;

@end
