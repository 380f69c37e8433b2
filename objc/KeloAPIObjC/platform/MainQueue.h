#import <Foundation/Foundation.h>

/// The queue on which the library calls every action and block, in order. The library has no loop
/// of its own: the host lets the queue's tasks run, on the one thread that it treats as its main
/// thread, in one of four ways.
///
/// - `run` blocks and runs tasks until `stop`: command-line hosts.
/// - `drain` runs what is waiting and returns: hosts with a frame or poll loop.
/// - `fileDescriptor` becomes readable while tasks wait; watch it and call `drain`.
/// - `addToRunLoop:forMode:` lets the main thread's NSRunLoop do that.
///
/// What is called of the host's has an autorelease pool of its own. Tasks never run inside the call
/// that posted them, nor inside another task. They must not raise: that ends the process.
@interface MainQueue : NSObject

/// Runs the tasks that are waiting now and returns how many those were.
+ (NSUInteger)drain;
/// Runs tasks as they come, until `stop`.
+ (void)run;
/// The same until `date` at the latest.
+ (void)runUntilDate:(NSDate *)date;
/// Makes `run` return after the task that is running; those behind it go on waiting. From any
/// thread; where nothing runs, the next `run` returns at once.
+ (void)stop;
/// Readable while tasks wait. Owned by the queue: watch it, do not read or close it.
+ (int)fileDescriptor;
/// Lets tasks run in this mode of the run loop, which is that of the host's main thread, from now
/// on.
+ (void)addToRunLoop:(NSRunLoop *)runLoop forMode:(NSString *)mode;
/// Takes that back.
+ (void)removeFromRunLoop:(NSRunLoop *)runLoop forMode:(NSString *)mode;

@end
