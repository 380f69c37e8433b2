#import <KeloAPIObjC/parsing/AnyObjectJsonParser.h>

/// Makes a `KLPagedData` of a page: an object with the paging keys and, under "records", the
/// records. Records that fail to parse are left out.
@interface KLPagedDataParser : AnyObjectJsonParser

/// `itemParser` parses each of the records; nil raises `NSInvalidArgumentException`.
- (instancetype)initWithItemParser:(AnyObjectJsonParser *)itemParser;
/// Stops the process.
- (instancetype)init;

@end
