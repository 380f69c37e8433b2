#pragma once

#import <KeloAPIObjC/api/EndpointResult.h>

#include <KeloAPIObjC/bridge/Values.hpp>

namespace KeloBridge {

/// The object of class `made` that tells of a C++ outcome, autoreleased. `content` makes what a
/// success brings an object.
template <class Result, class Content>
id outcome(Class made, const Result &result, Content content) {
    const auto *success = result.success();
    id brought = success == nullptr ? nil : content(*success);
    NSError *failure = success == nullptr ? error(*result.error()) : nil;
    return [[[made alloc] initWithContent:brought error:failure] autorelease];
}

} // namespace KeloBridge
