#import <KeloAPIObjC/parsing/AnyObjectJsonParser.h>

// The library's parsers of these models. Errors are of the domain "KeloAPI.JsonParseError", their
// codes are told with each.

/// Makes a `KLLoopData`. Needs "count" and "velocity" as numbers: code 3. Where "created" is no
/// date, it is the moment of parsing.
@interface LoopDataParser : AnyObjectJsonParser
@end

/// Makes a `KLLongform`. Needs "longformId" as text, "videoUrl" as a URL and "duration" as a
/// number: code 3.
@interface KLLongformParser : AnyObjectJsonParser
@end

/// Makes a `KLLongformViews`. Needs "longformId" as text and "count" as a number: code 3.
@interface KLLongformViewsParser : AnyObjectJsonParser
@end

/// Makes a `KLEndlessLikesRange`. Needs "count", "startTime", "endTime" and "level" as numbers:
/// code 3.
@interface KLEndlessLikesRangeParser : AnyObjectJsonParser
@end

/// Makes a `KLPostProcessStatus`. Needs "state" as text (code 3), and as one of the three (code 4).
@interface KLPostProcessStatusParser : AnyObjectJsonParser
@end

/// Makes a `KLVideoUpload`. Needs "mediaId" as text or number, and where "processingInfo" is an
/// object, its "state" as one of the service's texts: code 3.
@interface KLVideoUploadParser : AnyObjectJsonParser
@end
