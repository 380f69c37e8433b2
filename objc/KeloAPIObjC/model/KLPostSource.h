#import <KeloAPIObjC/bridge/KLBridged.h>

/// What one post took from another; the raw values are the wire's.
typedef NS_ENUM(NSInteger, KLPostSourceContentType) {
    KLPostSourceContentTypeUnknown = 0,
    KLPostSourceContentTypeAudio = 1,
    KLPostSourceContentTypeVideo = 2,
    KLPostSourceContentTypeSoundboardAudio = 3,
};

/// The post whose content another post reuses. One thread at a time.
@interface KLPostSource : KLBridged

/// Nil when "postId" or "userId" is missing or no number.
- (instancetype)initWithJSON:(NSDictionary *)json;
/// Stops the process.
- (instancetype)init;

/// "postId" and "userId", as decimal text.
@property(nonatomic, readonly) NSString *postId;
@property(nonatomic, readonly) NSString *userId;
/// "username" and "description"; nil when missing or no text.
@property(nonatomic, readonly) NSString *username;
@property(nonatomic, readonly) NSString *caption;
/// "avatarUrl" and "thumbnailUrl"; nil when missing or no URL.
@property(nonatomic, copy) NSURL *avatarUrl;
@property(nonatomic, copy) NSURL *thumbnailUrl;
/// "contentType"; unknown when missing or outside its values.
@property(nonatomic, readonly) KLPostSourceContentType contentType;

@end
