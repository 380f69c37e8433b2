#import <KeloAPIObjC/parsing/AnyObjectJsonParser.h>

/// What an answer without model data gives.
@interface KLEmpty : KLBridged
@end

/// Makes a `KLEmpty` of any object; never fails.
@interface KLEmptyParser : AnyObjectJsonParser
@end
