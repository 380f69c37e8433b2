#pragma once

#import <Foundation/Foundation.h>

#include <KeloAPI/platform/archive/KeyedArchiver.hpp>
#include <KeloAPI/platform/archive/KeyedUnarchiver.hpp>

#include <memory>
#include <string>

/// What an object encodes, a line for each value, in order: "object name Cafe".
extern "C" NSString *KeloEncodedLines(id<NSCoding> object);
/// The archive of an object of that class with these members, each an object, and no others.
extern "C" NSData *KeloArchiveOf(NSString *className, NSDictionary *members);

namespace KeloObjcTest {

inline id unarchived(NSData *archive) {
    return [NSKeyedUnarchiver unarchiveObjectWithData:archive];
}

/// The object after a round trip.
inline id archivedAndBack(id object) {
    return unarchived([NSKeyedArchiver archivedDataWithRootObject:object]);
}

/// What is read here of what the C++ library writes.
inline id readHere(const std::shared_ptr<const KeloAPI::Archivable> &object) {
    const KeloAPI::Data archive = KeloAPI::KeyedArchiver::archivedData(object);
    return unarchived([NSData dataWithBytes:archive.bytes().data() length:archive.size()]);
}

/// What the C++ library reads of what is written here; null for what it does not read.
template <class T>
std::shared_ptr<T> readThere(id object) {
    NSData *archive = [NSKeyedArchiver archivedDataWithRootObject:object];
    return KeloAPI::KeyedUnarchiver::unarchive<T>(KeloAPI::Data(
        std::string(static_cast<const char *>([archive bytes]), [archive length])));
}

} // namespace KeloObjcTest
