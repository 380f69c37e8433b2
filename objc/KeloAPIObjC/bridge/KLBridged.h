#import <Foundation/Foundation.h>

/// Root of the classes that stand for objects of the C++ library. While an Objective-C object for a
/// C++ object is alive, that C++ object is always the same Objective-C object. Objects may be
/// released on any thread.
///
/// An address that is no URL to the C++ library, as one with a port above 65535, counts as nil:
/// where there need not be one it is absent, where there must be one it raises
/// `NSInvalidArgumentException`.
///
/// Nil for an argument that must be there raises `NSInvalidArgumentException`, whose reason names
/// the argument. So do a message to an object that was never initialised, and a second
/// initialisation, which leaves the object as it is. Objects of a class that does not say that it
/// is archived raise it when they are encoded.
@interface KLBridged : NSObject {
@private
    void *_held;
}
@end
