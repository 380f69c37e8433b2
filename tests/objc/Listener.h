#import <Foundation/Foundation.h>

/// Notes what it hears of calls.
@interface Listener : NSObject {
@private
    NSMutableArray *_calls;
    double _fraction;
    int64_t _counts[3];
    BOOL _onMainThread;
}

/// One NSArray for each call with what it gave, NSNull for nil.
@property(nonatomic, readonly) NSArray *calls;
/// The last call's only, first and second object; nil for nil.
@property(nonatomic, readonly) id object;
@property(nonatomic, readonly) id second;
@property(nonatomic, readonly) double fraction;
/// Whether the last call came on the main thread.
@property(nonatomic, readonly) BOOL onMainThread;
- (int64_t)countAt:(NSUInteger)index;

- (void)heard;
- (void)heard:(id)object;
- (void)heard:(id)first and:(id)second;
- (void)heard:(id)first and:(id)second and:(id)third and:(id)fourth;
- (void)request:(id)request fraction:(double)fraction;
- (void)bytes:(int64_t)bytes total:(int64_t)total expected:(int64_t)expected;

@end
