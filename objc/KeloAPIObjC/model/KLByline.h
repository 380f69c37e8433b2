#import <KeloAPIObjC/bridge/KLBridged.h>

/// A short line of text shown with a post. One thread at a time.
@interface KLByline : KLBridged

/// Without an icon and entities.
- (instancetype)initWithText:(NSString *)text;
/// Stops the process.
- (instancetype)init;

/// "body".
@property(nonatomic, readonly) NSString *text;
/// "iconUrl"; nil when there is none, and for what is no URL.
@property(nonatomic, copy) NSURL *iconUrl;
/// "entities": the stretches of the text that link somewhere, each a `KLEntity`; one of another
/// class raises `NSInvalidArgumentException`. Never nil.
@property(nonatomic, copy) NSArray *entities;

@end
