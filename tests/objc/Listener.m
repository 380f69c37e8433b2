#import "Listener.h"

@implementation Listener

- (instancetype)init {
    self = [super init];
    if (self != nil) {
        _calls = [NSMutableArray new];
    }
    return self;
}

- (void)dealloc {
    [_calls release];
    [super dealloc];
}

- (NSArray *)calls {
    return _calls;
}

static id known(NSArray *call, NSUInteger index) {
    id object = [call count] > index ? [call objectAtIndex:index] : nil;
    return object == [NSNull null] ? nil : object;
}

- (id)object {
    return known([_calls lastObject], 0);
}

- (id)second {
    return known([_calls lastObject], 1);
}

- (double)fraction {
    return _fraction;
}

- (BOOL)onMainThread {
    return _onMainThread;
}

- (int64_t)countAt:(NSUInteger)index {
    return _counts[index];
}

- (void)note:(NSArray *)call {
    _onMainThread = [NSThread isMainThread];
    [_calls addObject:call];
}

static id noted(id object) {
    return object == nil ? [NSNull null] : object;
}

- (void)heard {
    [self note:[NSArray array]];
}

- (void)heard:(id)object {
    [self note:[NSArray arrayWithObject:noted(object)]];
}

- (void)heard:(id)first and:(id)second {
    [self note:[NSArray arrayWithObjects:noted(first), noted(second), nil]];
}

- (void)heard:(id)first and:(id)second and:(id)third and:(id)fourth {
    [self note:[NSArray
                   arrayWithObjects:noted(first), noted(second), noted(third), noted(fourth), nil]];
}

- (void)request:(id)request fraction:(double)fraction {
    _fraction = fraction;
    [self heard:request];
}

- (void)bytes:(int64_t)bytes total:(int64_t)total expected:(int64_t)expected {
    _counts[0] = bytes;
    _counts[1] = total;
    _counts[2] = expected;
    [self heard];
}

@end
