#import <KeloAPIObjC/bridge/KLBridged.h>

/// What kind of place a venue is. Archives "categoryId", "shortName" and "iconUrl"; a text that an
/// archive lacks is an empty one. One thread at a time.
@interface KLVenueCategory : KLBridged <NSCoding>

/// Without an icon.
- (instancetype)initWithCategoryId:(NSString *)categoryId shortName:(NSString *)shortName;
/// Stops the process.
- (instancetype)init;

@property(nonatomic, readonly) NSString *categoryId;
@property(nonatomic, readonly) NSString *shortName;
/// Nil when there is none, and for what is no URL.
@property(nonatomic, copy) NSURL *iconUrl;

@end
