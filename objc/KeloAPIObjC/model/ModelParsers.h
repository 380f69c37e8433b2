#import <KeloAPIObjC/parsing/AnyObjectJsonParser.h>

@class KLPagedDataParser;

// The library's parsers of these models. Errors are of the domain "KeloAPI.JsonParseError", their
// codes are told with each.

/// Makes a `KLTag`. Needs "tagId" (text or number) and "tagName", or else "tag", as text: code 3.
@interface KLTagParser : AnyObjectJsonParser
@end

/// Makes a `KLByline`. Needs "body", a text that is not empty, and "iconUrl", a URL: code 3.
/// Entities that fail to parse are left out.
@interface KLBylineParser : AnyObjectJsonParser
@end

/// Makes a `KLVenue` of the service's own, flat form. Needs "foursquareVenueId" and "venueName" as
/// texts: code 3.
@interface KLVenueParser : AnyObjectJsonParser
@end

/// Makes a `KLVenue` of the form of the Foursquare venue service. Needs "id" and "name" as texts:
/// code 3.
@interface KLFoursquareVenueParser : AnyObjectJsonParser
@end

/// Makes a `KLUrlAction` of objects of the "type" "urlAction" and no others: code 2. Needs
/// "reference", "title" and "actionTitle" as texts and "actionLink" as a URL: code 3.
@interface KLUrlActionParser : AnyObjectJsonParser
@end

/// Makes a `KLSolicitation` of objects of the "type" "solicitation" and no others: code 2. Needs
/// "reference" as text: code 3.
@interface KLSolicitationParser : AnyObjectJsonParser
@end

/// Makes a `SoundboardSound`. Needs "soundId": code 3.
@interface SoundboardSoundParser : AnyObjectJsonParser
@end

/// Makes a `KLWatchPost` of a timeline's record; never fails. A record without "postId" stops the
/// process.
@interface PostParser : AnyObjectJsonParser
@end

/// Makes a `KLWatchUser` of any object; never fails.
@interface UserParser : AnyObjectJsonParser
@end

/// Makes a `KLLike`; never fails. An object without "likeId" stops the process.
@interface LikeParser : AnyObjectJsonParser
@end

/// Makes a `KLRekelo`; never fails. An object without "repostId" stops the process.
@interface RekeloParser : AnyObjectJsonParser
@end

/// Makes a `KLEntity`. Needs "range", a list of two numbers (code 3): the offsets of its start and
/// its end in code points, within the text and in order (code 4).
@interface KLEntityParser : AnyObjectJsonParser

/// For the entities of this text; nil is an empty one.
- (instancetype)initWithText:(NSString *)text;
/// Stops the process.
- (instancetype)init;

@end

/// Makes a `KLChannel`. Needs "channelId" (text or number) and "channel" (text): code 3.
@interface KLChannelParser : AnyObjectJsonParser

/// One that leaves "timeline" unread.
- (instancetype)init;
/// `timelineParser` reads "timeline", and what it fails with is the failure; nil leaves that key
/// unread. What a class derived from `KLPagedDataParser` overrides is not asked.
- (instancetype)initWithTimelineParser:(KLPagedDataParser *)timelineParser;

@end
