#import <Foundation/Foundation.h>

/// Root of the classes that stand for objects of the C++ library. While an Objective-C object for a
/// C++ object is alive, that C++ object is always the same Objective-C object. Objects may be
/// released on any thread.
@interface KLBridged : NSObject {
@private
    void *_held;
}
@end
