#import <KeloAPIObjC/bridge/KLBridged.h>

/// A card between the posts of a feed. Does not change once made.
@interface KLFeedInsert : KLBridged

- (instancetype)initWithReference:(NSString *)reference closeable:(BOOL)closeable;
/// Stops the process.
- (instancetype)init;

/// "reference": the service's name of the insert.
@property(nonatomic, readonly) NSString *reference;
/// "closeable": whether the user may dismiss it.
@property(nonatomic, readonly) BOOL closeable;

@end
