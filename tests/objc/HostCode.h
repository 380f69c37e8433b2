#import <KeloAPIObjC/KeloAPIObjC.h>

// What a host writes, in plain Objective-C.

/// Makes the text under "name". Without one it fails as "how" says: "insufficient", "own" error,
/// "raise", "super", or nothing at all.
@interface NameParser : AnyObjectJsonParser {
    NSInteger _asked;
}
/// How often it was asked.
@property(nonatomic, readonly) NSInteger asked;
@end

/// Overrides nothing.
@interface IdleParser : AnyObjectJsonParser
@end

/// Makes tags out of names.
@interface TagParser : AnyObjectJsonParser
@end

/// Raises an NSRangeException where it is read from an archive.
@interface Unreadable : NSObject <NSCoding>
@end

#ifdef __cplusplus
extern "C" {
#endif

/// The elements that a fast enumeration gives.
NSArray *KeloEnumerated(KLPagedData *data);
/// The same, where the loop empties the list in its first round.
NSArray *KeloEnumeratedWhileRemoving(KLPagedData *data);

#ifdef __cplusplus
}
#endif
