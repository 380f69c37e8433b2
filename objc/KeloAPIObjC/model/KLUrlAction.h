#import <KeloAPIObjC/model/KLFeedInsert.h>

/// A card that calls on the user to open a URL. Does not change once made.
@interface KLUrlAction : KLFeedInsert

/// Nil for `closeable`, a boolean, is no. Nil and what is no URL for `actionUrl` raise
/// `NSInvalidArgumentException`; all after `closeable` may be nil.
- (instancetype)initWithReference:(NSString *)reference
                            title:(NSString *)title
                      actionTitle:(NSString *)actionTitle
                        actionUrl:(NSURL *)actionUrl
                        closeable:(NSNumber *)closeable
                  backgroundImage:(NSURL *)backgroundImage
                  backgroundVideo:(NSURL *)backgroundVideo
                          details:(NSString *)details
                       actionIcon:(NSURL *)actionIcon
                     closeUrlPath:(NSString *)closeUrlPath;
/// These stop the process.
- (instancetype)init;
- (instancetype)initWithReference:(NSString *)reference closeable:(BOOL)closeable;

/// "title" and "actionTitle".
@property(nonatomic, readonly) NSString *title;
@property(nonatomic, readonly) NSString *actionTitle;
/// "actionLink".
@property(nonatomic, readonly) NSURL *actionUrl;
/// "backgroundImage" and "backgroundVideo"; nil when missing or no URL.
@property(nonatomic, readonly) NSURL *backgroundImage;
@property(nonatomic, readonly) NSURL *backgroundVideo;
/// "description"; nil when there is none.
@property(nonatomic, readonly) NSString *details;
/// "actionIcon"; nil when missing or no URL.
@property(nonatomic, readonly) NSURL *actionIcon;
/// "closeUrlPath": the path to call when the user dismisses the card; nil when there is none.
@property(nonatomic, readonly) NSString *closeUrlPath;

@end
