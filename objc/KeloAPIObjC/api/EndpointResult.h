#import <Foundation/Foundation.h>

/// How a call ended: in one of two cases, success with what it brought, which the derived classes
/// tell, or the error that the call reported. Does not change once made.
@interface EndpointResult : NSObject {
@private
    id _content;
    NSError *_error;
    BOOL _isMade;
}

/// A host makes some in its own tests. `error` is nil for a success; so is `content` where a
/// success brings nothing.
- (instancetype)initWithContent:(id)content error:(NSError *)error;
/// Not offered: stops the process.
- (instancetype)init;

@property(nonatomic, readonly) BOOL success;
/// Nil for a success.
@property(nonatomic, readonly) NSError *error;
/// What the success brought; nil with an error.
@property(nonatomic, readonly) id content;

@end
