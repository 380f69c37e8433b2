#pragma once

#include <KeloAPI/base/Object.hpp>

#include <string_view>
#include <vector>

namespace KeloAPI {

class KeyedArchiver;
class KeyedUnarchiver;

/// A model that can be kept in an archive. To be read back, a class `T` has two static members
/// besides:
///
///     static constexpr std::string_view archivedClassName = "KLTag";
///     static std::shared_ptr<T> initWithCoder(KeyedUnarchiver& coder);
///
/// where `initWithCoder` gives null for an archive that lacks what the class needs.
class KELO_API Archivable : public Object {
public:
    /// The names of its class and superclasses in an archive, from its own upwards, without the
    /// common root, which the archiver adds.
    virtual std::vector<std::string_view> archivedClassNames() const = 0;

    /// Hands everything that is worth keeping to `coder`, each value under a key of its own.
    virtual void encodeWithCoder(KeyedArchiver& coder) const = 0;
};

} // namespace KeloAPI
