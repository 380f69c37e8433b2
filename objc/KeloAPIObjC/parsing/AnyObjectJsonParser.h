#import <KeloAPIObjC/bridge/KLBridged.h>

/// A parser whose type does not say what it makes. Meant to be derived from: the library parses
/// with an object of a derived class on threads of its own, keeps it alive as long as it needs it,
/// and asks it any number of times. The library's own parsers are of this class, too.
@interface AnyObjectJsonParser : KLBridged

- (instancetype)init;

/// The object that `json` describes. Where it describes none nil, and why in `error`, which may be
/// NULL. Unless a derived class overrides it, that is the case `NotImplemented`: the domain is
/// "KeloAPI.JsonParseError", the code 0. An exception that an override raises fails the parse the
/// same way, where the library asks.
- (id)parse:(NSDictionary *)json error:(NSError **)error;

@end
