#import <KeloAPIObjC/api/EndpointResult.h>

@implementation EndpointResult

- (instancetype)initWithContent:(id)content error:(NSError *)error {
    self = [super init];
    if (self != nil) {
        _content = error == nil ? [content retain] : nil;
        _error = [error retain];
    }
    return self;
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
