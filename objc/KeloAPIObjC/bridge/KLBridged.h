#import <Foundation/Foundation.h>

/// Root of the classes that stand for objects of the C++ library. As long as the host or the C++
/// library holds the object, there is one Objective-C object for it, always the same one, with the
/// instance variables that a host's class gave it. It ends when the last of both lets go, on that
/// one's thread: `dealloc` may come on a thread of the library. Any thread may release it.
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
    void *_life;
}
@end
