// What the checkers need not tell of: the Foundation's and its runtime's own.
#import <Foundation/Foundation.h>

#include <functional>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>

/// The tables of classes and methods, which stay to the end. Objects are not made by these.
extern "C" const char *__lsan_default_suppressions();
extern "C" const char *__lsan_default_suppressions() {
    return "leak:objc_malloc\nleak:class_copyMethodList\n";
}
#endif

#ifdef __SANITIZE_THREAD__
/// The Foundation takes its locks and the runtime's in either order.
extern "C" const char *__tsan_default_suppressions();
extern "C" const char *__tsan_default_suppressions() {
    return "deadlock:libgnustep-base\n";
}
#endif

namespace KeloObjcTest {

void lettingLeak(const std::function<void()> &call);
void lettingLeak(const std::function<void()> &call) {
#ifdef __SANITIZE_ADDRESS__
    const __lsan::ScopedDisabler notTold;
#endif
    call();
}

} // namespace KeloObjcTest

extern "C" void KeloMakeWhatStays();

/// Has classes make what they keep for good, and lose.
extern "C" void KeloMakeWhatStays() {
    KeloObjcTest::lettingLeak([] {
        NSAutoreleasePool *pool = [NSAutoreleasePool new];
        [NSData data];
        [NSKeyedUnarchiver class];
        [pool drain];
    });
}
