#import <KeloAPIObjC/model/KLFeedInsert.h>

@class KLPagedData;

/// A card of several users, made by the host. Does not change once made, but for its list.
@interface KLUserMosaic : KLFeedInsert

/// `description` becomes the subtitle. Nil for `users` raises
/// `NSInvalidArgumentException`.
- (instancetype)initWithUsers:(KLPagedData *)users
                        title:(NSString *)title
                  description:(NSString *)description
                         link:(NSString *)link
                    reference:(NSString *)reference
                    closeable:(BOOL)closeable;
/// These stop the process.
- (instancetype)init;
- (instancetype)initWithReference:(NSString *)reference closeable:(BOOL)closeable;

/// Never nil.
@property(nonatomic, readonly) KLPagedData *users;
@property(nonatomic, readonly) NSString *title;
@property(nonatomic, readonly) NSString *subtitle;
@property(nonatomic, readonly) NSString *link;

@end
