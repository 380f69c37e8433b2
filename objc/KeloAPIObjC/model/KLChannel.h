#import <KeloAPIObjC/bridge/KLBridged.h>

@class KLPagedData;

/// A named, coloured topic feed. Equal are channels of the same identifier. Archives identifier,
/// name, creation, the first two icons, both colours and the description, each under its own name;
/// texts that an archive lacks are empty, colours black. Nil for a text that must be there is an
/// empty one. One thread at a time.
@interface KLChannel : KLBridged <NSCoding>

/// Without identifier and name, and black.
- (instancetype)init;
- (instancetype)initWithChannelId:(NSString *)channelId
                             name:(NSString *)name
                     fontColorHex:(NSString *)fontColorHex
               backgroundColorHex:(NSString *)backgroundColorHex;

@property(nonatomic, copy) NSString *channelId;
@property(nonatomic, copy) NSString *name;
/// Colours as hexadecimal digits.
@property(nonatomic, copy) NSString *fontColorHex;
@property(nonatomic, copy) NSString *backgroundColorHex;
/// Nil where there is none.
@property(nonatomic, copy) NSURL *iconUrl;
@property(nonatomic, copy) NSURL *iconRetinaUrl;
@property(nonatomic, copy) NSURL *exploreIconRetinaUrl;
/// Whether the signed-in user follows the channel.
@property(nonatomic) BOOL following;
/// Nil where it is not known.
@property(nonatomic, copy) NSDate *created;
@property(nonatomic, copy) NSString *channelDescription;
@property(nonatomic, copy) NSString *vanityPathSuffix;
/// The first page of the channel's feed; nil where none was sent or read.
@property(nonatomic, retain) KLPagedData *timelineData;
@property(nonatomic) BOOL showRecent;

@end
