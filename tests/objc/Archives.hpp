#pragma once

#import <Foundation/Foundation.h>

#include <KeloAPI/platform/archive/KeyedArchiver.hpp>
#include <KeloAPI/platform/archive/KeyedUnarchiver.hpp>

#include <functional>
#include <memory>
#include <string>

/// The keys that an object encodes, each with its kind, in order: "object name, integer width 3".
extern "C" NSString *KeloEncodedKeys(id<NSCoding> object);

namespace KeloArchiveTest {

inline NSData *data(const KeloAPI::Data &bytes) {
    return [NSData dataWithBytes:bytes.bytes().data() length:bytes.size()];
}

/// What the Foundation archives, unarchived by the Foundation.
inline id archivedAndBack(id object) {
    return [NSKeyedUnarchiver
        unarchiveObjectWithData:[NSKeyedArchiver archivedDataWithRootObject:object]];
}

/// What the C++ library archives, unarchived by the Foundation.
inline id unarchived(const std::shared_ptr<const KeloAPI::Archivable> &object) {
    return [NSKeyedUnarchiver
        unarchiveObjectWithData:data(KeloAPI::KeyedArchiver::archivedData(object))];
}

/// What the Foundation archives, unarchived by the C++ library.
template <class T>
std::shared_ptr<T> unarchived(id object) {
    NSData *bytes = [NSKeyedArchiver archivedDataWithRootObject:object];
    return KeloAPI::KeyedUnarchiver::unarchive<T>(KeloAPI::Data(
        std::string(static_cast<const char *>([bytes bytes]), [bytes length])));
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

/// Such an object, unarchived by the Foundation.
inline id unarchived(std::string_view className, Archived::Encode encode = {}) {
    return unarchived(std::make_shared<Archived>(className, std::move(encode)));
}

} // namespace KeloArchiveTest
