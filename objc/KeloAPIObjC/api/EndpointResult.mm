#import <KeloAPIObjC/api/EndpointResult.h>

#include <KeloAPIObjC/bridge/Required.hpp>

@implementation EndpointResult

- (instancetype)initWithContent:(id)content error:(NSError *)error {
    if (_isMade) {
        [NSException raise:NSInvalidArgumentException
                    format:@"an object of class %@ is initialised already", [self class]];
    }
    self = [super init];
    if (self != nil) {
        _isMade = YES;
        _content = error == nil ? [content retain] : nil;
        _error = [error retain];
    }
    return self;
}

- (instancetype)init {
    NSString *name = [NSString stringWithFormat:@"KeloAPI.%@", NSStringFromClass([self class])];
    KeloBridge::unimplemented("init()", [name UTF8String]);
}

- (void)dealloc {
    [_content release];
    [_error release];
    [super dealloc];
}

- (BOOL)success {
    return _error == nil;
}

- (NSError *)error {
    return _error;
}

- (id)content {
    return _content;
}

@end
