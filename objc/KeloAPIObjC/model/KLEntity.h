#import <KeloAPIObjC/bridge/KLBridged.h>

/// A stretch of a text that links somewhere. Equal are entities of the same identifier, type and
/// title. Archives every property under its own name; what an archive lacks is nil, empty or an
/// empty range. One thread at a time.
@interface KLEntity : KLBridged <NSCoding>

/// Stores everything as given; nil for title or link is an empty one.
- (instancetype)initWithIdString:(NSString *)idString
                            type:(NSString *)type
                           title:(NSString *)title
                            link:(NSString *)link
                           range:(NSRange)range;
/// Stops the process.
- (instancetype)init;

/// Nil where there is none.
@property(nonatomic, readonly) NSString *idString;
@property(nonatomic, readonly) NSString *type;
@property(nonatomic, readonly) NSString *title;
/// As user interfaces show it: with " | " before it; empty where there is none.
@property(nonatomic, readonly) NSString *link;
/// The link without its first " | ".
@property(nonatomic, readonly) NSString *applicationLink;
/// The stretch, in UTF-16 code units of the text.
@property(nonatomic) NSRange range;

@end
