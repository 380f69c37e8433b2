#pragma once

#import <Foundation/Foundation.h>

#include <KeloAPI/archive/KeyedArchiver.hpp>
#include <KeloAPI/archive/KeyedUnarchiver.hpp>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The keys that an object encodes, each with its kind, in order: "object name, integer width 3".
extern "C" NSString *KeloEncodedKeys(id<NSCoding> object);
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
    return KeloAPI::KeyedUnarchiver::unarchive<T>(
        KeloAPI::Data(std::string(static_cast<const char *>([archive bytes]), [archive length])));
}

/// An archived object of a class, with nothing in it but what `encode` writes.
class Archived final : public KeloAPI::Archivable {
public:
    using Encode = std::function<void(KeloAPI::KeyedArchiver &coder)>;

    explicit Archived(std::string_view className, Encode encode = {})
        : _className(className)
        , _encode(std::move(encode)) {}
    std::vector<std::string_view> archivedClassNames() const override { return {_className}; }
    void encodeWithCoder(KeloAPI::KeyedArchiver &coder) const override {
        if (_encode) {
            _encode(coder);
        }
    }

private:
    std::string_view _className;
    Encode _encode;
};

/// Such an object, read here.
inline id readOf(std::string_view className, Archived::Encode encode = {}) {
    return readHere(std::make_shared<Archived>(className, std::move(encode)));
}

} // namespace KeloObjcTest
