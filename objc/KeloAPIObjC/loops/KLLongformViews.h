#import <KeloAPIObjC/bridge/KLBridged.h>

/// How often a long-form video has been viewed in all. Does not change once made.
@interface KLLongformViews : KLBridged

- (instancetype)initWithLongformId:(NSString *)longformId count:(NSInteger)count;
/// Not offered: stops the process.
- (instancetype)init;

/// "longformId".
@property(nonatomic, readonly) NSString *longformId;
/// "count".
@property(nonatomic, readonly) NSInteger count;

@end
