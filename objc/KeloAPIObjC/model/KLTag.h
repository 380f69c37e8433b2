#import <KeloAPIObjC/bridge/KLBridged.h>

/// A hashtag. Archives identifier and name, each under its own name, not the count; a text that an
/// archive lacks is empty, and a name is taken as it was kept. Nil for a text is an empty one. One
/// thread at a time.
@interface KLTag : KLBridged <NSCoding>

/// The name is stored with a "#" before it, unless it begins with one already.
- (instancetype)initWithTagId:(NSString *)tagId name:(NSString *)name;
/// A tag that has no identifier yet: an empty one.
- (instancetype)initWithName:(NSString *)name;
/// Stops the process.
- (instancetype)init;

@property(nonatomic, readonly) NSString *tagId;
/// With its "#".
@property(nonatomic, readonly) NSString *name;
/// The name without its first "#".
@property(nonatomic, readonly) NSString *nameWithoutHash;
/// Posts with this tag.
@property(nonatomic) NSInteger count;

@end
