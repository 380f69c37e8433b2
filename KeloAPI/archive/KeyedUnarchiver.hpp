#pragma once

#include <KeloAPI/archive/Archivable.hpp>
#include <KeloAPI/base/Data.hpp>
#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/base/Number.hpp>
#include <KeloAPI/base/Range.hpp>
#include <KeloAPI/base/URL.hpp>

#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <typeindex>
#include <vector>

namespace KeloAPI {

class KeyedUnarchiver;

/// A class whose objects can be read back from an archive.
template <class T>
concept Unarchivable = std::derived_from<T, Archivable> && requires(KeyedUnarchiver& coder) {
    {std::string_view(T::archivedClassName)};
    { T::initWithCoder(coder) } -> std::convertible_to<std::shared_ptr<T>>;
};

/// Reads keyed archives of the phone platform in binary property lists, its own and ours. One
/// thread at a time.
///
/// Any bytes may be given: what is malformed, or asks for more work than its size is worth, gives
/// no object.
///
/// A model asks for its values one by one. A key that is missing, null in the archive or of another
/// kind gives nothing, or the default that stands beside the function.
class KELO_API KeyedUnarchiver {
public:
    /// The object that was archived; null when `archive` is not an archive, its root not a `T` or
    /// one that `T` refuses, or when it exceeds a limit: 64 MB, 500,000 values, 100 objects within
    /// one another.
    template <Unarchivable T>
    static std::shared_ptr<T> unarchive(const Data& archive) {
        KeyedUnarchiver coder(archive);
        auto object = std::static_pointer_cast<T>(
            coder.rootObject(T::archivedClassName, typeid(T), initialiser<T>()));
        return coder.isRefused() ? nullptr : object;
    }

    /// The list that was archived, in its order; the same archived object is the same `T` each
    /// time. Absent when the root of `archive` is not an array, when one of its elements is not a
    /// `T` or one that `T` refuses, and when `unarchive` gave null for another reason. A list may
    /// have 500,000 elements.
    template <Unarchivable T>
    static std::optional<std::vector<std::shared_ptr<T>>> unarchiveList(const Data& archive) {
        KeyedUnarchiver coder(archive);
        const auto objects = coder.rootObjects(T::archivedClassName, typeid(T), initialiser<T>());
        if (!objects || coder.isRefused()) {
            return std::nullopt;
        }
        std::vector<std::shared_ptr<T>> typed;
        typed.reserve(objects->size());
        for (const auto& object : *objects) {
            typed.push_back(std::static_pointer_cast<T>(object));
        }
        return typed;
    }

    /// The name of the class of the object in an archive, without a module before it; absent when
    /// there is none. A list is an "NSArray", or a subclass of it.
    static std::optional<std::string> rootClassName(const Data& archive);

    /// Whether there is a value under `key`, null included.
    bool containsValue(std::string_view key) const;

    /// An object of class `T` or of one that the archive calls a subclass of it. The same archived
    /// object is the same `T` each time; one that is just being decoded is null, so a circle is
    /// null where it closes.
    template <Unarchivable T>
    std::shared_ptr<T> decodeObject(std::string_view key) {
        return std::static_pointer_cast<T>(
            object(key, T::archivedClassName, typeid(T), initialiser<T>()));
    }

    /// Any number, truncated toward zero and kept within the bounds; 0 otherwise.
    std::int64_t decodeInt64(std::string_view key) const;
    /// Any number; 0 otherwise.
    double decodeDouble(std::string_view key) const;
    /// True exactly for a number that is not zero.
    bool decodeBool(std::string_view key) const;
    /// To the microsecond; absent also when it lies beyond what a `Date` can tell.
    std::optional<Date> decodeDate(std::string_view key) const;
    /// Resolved against its base, when the archive has one. Absent also when it is not a URL to us.
    std::optional<URL> decodeURL(std::string_view key) const;
    /// UTF-8.
    std::optional<std::string> decodeText(std::string_view key) const;
    /// Of the kind that the archive has. A boolean counts.
    std::optional<Number> decodeNumber(std::string_view key) const;
    /// Absent also when its end lies beyond 2^63 - 1.
    std::optional<Range> decodeRange(std::string_view key) const;

    KeyedUnarchiver(const KeyedUnarchiver&) = delete;
    KeyedUnarchiver& operator=(const KeyedUnarchiver&) = delete;

private:
    class [[gnu::visibility("hidden")]] Contents;
    using Initialiser = std::shared_ptr<Archivable> (*)(KeyedUnarchiver&);

    template <class T>
    static Initialiser initialiser() {
        return [](KeyedUnarchiver& coder) -> std::shared_ptr<Archivable> {
            return T::initWithCoder(coder);
        };
    }

    explicit KeyedUnarchiver(const Data& archive);
    ~KeyedUnarchiver();

    std::shared_ptr<Archivable> rootObject(std::string_view className, std::type_index type,
                                           Initialiser initialise);
    std::optional<std::vector<std::shared_ptr<Archivable>>>
    rootObjects(std::string_view className, std::type_index type, Initialiser initialise);
    std::shared_ptr<Archivable> object(std::string_view key, std::string_view className,
                                       std::type_index type, Initialiser initialise);
    bool isRefused() const;

    std::unique_ptr<Contents> _contents;
};

} // namespace KeloAPI
