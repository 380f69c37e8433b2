#import <KeloAPIObjC/model/KLFeedInsert.h>

@class KLPagedData;

/// How a mosaic of posts is laid out.
typedef NS_ENUM(NSInteger, KLPostsMosaicType) {
    KLPostsMosaicTypeUnknown,
    KLPostsMosaicTypeAvatarIncluded,
    KLPostsMosaicTypeDefault,
    KLPostsMosaicTypeSmallThumbnails
};

/// A card of several posts, made by the host. Does not change once made, but for its list.
@interface KLPostsMosaic : KLFeedInsert

/// `description` becomes the subtitle. Nil for `posts`, and a type that is none of the
/// enumeration, raise `NSInvalidArgumentException`.
- (instancetype)initWithPosts:(KLPagedData *)posts
                        title:(NSString *)title
                  description:(NSString *)description
                         link:(NSString *)link
                    reference:(NSString *)reference
                    closeable:(BOOL)closeable
                         type:(KLPostsMosaicType)type
                     pinnable:(BOOL)pinnable;
/// These stop the process.
- (instancetype)init;
- (instancetype)initWithReference:(NSString *)reference closeable:(BOOL)closeable;

/// Never nil.
@property(nonatomic, readonly) KLPagedData *posts;
@property(nonatomic, readonly) NSString *title;
@property(nonatomic, readonly) NSString *subtitle;
@property(nonatomic, readonly) NSString *link;
@property(nonatomic, readonly) KLPostsMosaicType type;
@property(nonatomic, readonly) BOOL pinnable;

@end
