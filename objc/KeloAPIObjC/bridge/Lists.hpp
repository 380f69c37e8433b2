#pragma once

#import <Foundation/Foundation.h>

#include <KeloAPIObjC/bridge/Bridge.hpp>

#include <memory>
#include <vector>

/// Between the lists of both languages. No element is null.
namespace KeloBridge {

template <class T>
NSArray *array(const std::vector<std::shared_ptr<T>> &objects) {
    NSMutableArray *made = [NSMutableArray arrayWithCapacity:objects.size()];
    for (const auto &object : objects) {
        [made addObject:wrap(object)];
    }
    return made;
}

/// Nil is no objects. One that is no `T` raises `NSInvalidArgumentException`.
template <class T>
std::vector<std::shared_ptr<T>> objects(NSArray *array) {
    std::vector<std::shared_ptr<T>> made;
    made.reserve([array count]);
    for (NSUInteger i = 0; i < [array count]; ++i) {
        made.push_back(shared<T>([array objectAtIndex:i]));
    }
    return made;
}

} // namespace KeloBridge
