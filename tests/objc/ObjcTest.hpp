#pragma once

#import <KeloAPIObjC/KeloAPIObjC.h>

#import <KeloAPIObjC/bridge/Caught.h>

#include <gtest/gtest.h>

#include <functional>

namespace KeloObjcTest {

/// What the call raises; nil when it raises nothing.
template <class Call>
NSException *raised(Call call) {
    return KLCaught([](void *context) { (*static_cast<Call *>(context))(); }, &call);
}

/// Makes the call, whose leaks are the Foundation's own and not told.
void lettingLeak(const std::function<void()> &call);

/// The object that a JSON text is.
inline NSDictionary *json(const char *text) {
    NSData *bytes = [[NSString stringWithUTF8String:text] dataUsingEncoding:NSUTF8StringEncoding];
    return [NSJSONSerialization JSONObjectWithData:bytes options:0 error:nullptr];
}

/// Compares as Objective-C does; two nils are equal.
inline testing::AssertionResult same(id actual, id expected) {
    if (actual == expected || [actual isEqual:expected]) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure()
           << [[NSString stringWithFormat:@"%@ is not %@", actual, expected] UTF8String];
}

} // namespace KeloObjcTest
