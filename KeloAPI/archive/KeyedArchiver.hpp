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
#include <string_view>
#include <vector>

namespace KeloAPI {

/// Writes the phone platform's keyed archives as binary property lists: what its keyed unarchiver
/// reads, and ours within its limits. One thread at a time.
///
/// A model hands over its values one by one; each takes the key that the model gives, which is used
/// once for each object. An absent value is written as the archive's null, as the platform does.
class KELO_API KeyedArchiver {
public:
    /// The archive of `object` and all it refers to; null is archived as null. However deep objects
    /// refer to one another, and whether in circles, each is written once.
    static Data archivedData(const std::shared_ptr<const Archivable>& object);

    /// The archive of a list, the platform's array, with all its objects in their order. They may
    /// be of several classes; a null among them stops the process.
    template <std::derived_from<Archivable> T>
    static Data archivedData(const std::vector<std::shared_ptr<T>>& objects) {
        return archivedList({objects.begin(), objects.end()});
    }

    /// An object that is encoded later, once, and referred to here.
    void encodeObject(const std::shared_ptr<const Archivable>& object, std::string_view key);
    /// An integer entry, not an object.
    void encodeInt64(std::int64_t value, std::string_view key);
    void encodeDouble(double value, std::string_view key); ///< A real entry, not an object.
    /// A boolean entry, not an object.
    void encodeBool(bool value, std::string_view key);
    /// To about a tenth of a microsecond in these decades: the archive has doubles.
    void encodeDate(const std::optional<Date>& date, std::string_view key);
    /// Its whole text, without a base.
    void encodeURL(const std::optional<URL>& url, std::string_view key);
    /// UTF-8. Bytes that are not are replaced by U+FFFD.
    void encodeText(const std::optional<std::string_view>& text, std::string_view key);
    /// A number object; its kind is kept, but for unsigned integers below 2^63, which are read as
    /// signed.
    void encodeNumber(const std::optional<Number>& number, std::string_view key);
    /// A range of negative numbers is written, but none is read.
    void encodeRange(const std::optional<Range>& range, std::string_view key);

    KeyedArchiver(const KeyedArchiver&) = delete;
    KeyedArchiver& operator=(const KeyedArchiver&) = delete;

private:
    class [[gnu::visibility("hidden")]] Contents;

    KeyedArchiver();
    ~KeyedArchiver();

    static Data archivedList(const std::vector<std::shared_ptr<const Archivable>>& objects);

    std::unique_ptr<Contents> _contents;
};

} // namespace KeloAPI
