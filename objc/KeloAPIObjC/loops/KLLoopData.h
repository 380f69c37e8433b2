#import <KeloAPIObjC/bridge/KLBridged.h>

#include <stdint.h>

/// A snapshot of a loop counter and the rate at which it grows, so that a count can keep rising on
/// the screen between two answers of the service. Archives "count", "velocity", "created" and, as a
/// boolean, "onFire". One thread at a time.
///
/// Nil for a property raises `NSInvalidArgumentException`; none is ever nil.
@interface KLLoopData : KLBridged <NSCoding>

/// A snapshot taken now.
- (instancetype)initWithCount:(NSNumber *)count velocity:(NSNumber *)velocity;
/// Nil unless count and velocity are there; a missing `created` is the moment of decoding.
- (instancetype)initWithCoder:(NSCoder *)coder;
/// Stops the process.
- (instancetype)init;

/// Loops counted at the instant `created`; an unsigned 64-bit integer.
@property(nonatomic, retain) NSNumber *count;
/// Growth of the counter, in loops per second; a double.
@property(nonatomic, retain) NSNumber *velocity;
/// The instant at which `count` was true, to the microsecond.
@property(nonatomic, retain) NSDate *created;
/// A flag of the service, carried as given.
@property(nonatomic) BOOL onFire;

/// Loops estimated to have happened since `created`: velocity times elapsed seconds, without the
/// fraction. A product that is negative, not finite or not below 2^64 stops the process; a velocity
/// that came from elsewhere may be any double, so look at it first.
@property(nonatomic, readonly) uint64_t loopsSinceCreation;

/// Adds loops that the host has seen itself. A sum beyond 64 bits stops the process. The
/// extrapolation goes on from the old instant.
- (void)addLoops:(uint64_t)n;

@end
