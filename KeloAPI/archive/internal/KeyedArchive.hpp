#pragma once

#include <KeloAPI/archive/internal/PropertyList.hpp>
#include <KeloAPI/base/Data.hpp>

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace KeloAPI {

/// A keyed archive taken apart: its list of objects, the place of its root among them, and what
/// stands under a key.
class KeyedArchive {
public:
    using Reference = PropertyList::Reference;
    /// The place of an object in the archive's list of objects.
    using Place = std::uint32_t;
    static constexpr Place null = 0;

    /// None when the bytes are not a property list, or that is not a keyed archive.
    static std::optional<KeyedArchive> read(const Data& archive);

    /// A value of this kind; null where there is none.
    template <class T>
    const T* get(std::optional<Reference> value) const {
        return value ? _list.get<T>(*value) : nullptr;
    }

    Place root() const { return _root; }

    /// An object's own entries; null when it has none.
    const PropertyList::Dictionary* entries(Place object) const {
        return _list.get<PropertyList::Dictionary>(_objects[object]);
    }

    /// What stands under a key; none when nothing does.
    std::optional<Reference> value(const PropertyList::Dictionary& entries,
                                   std::string_view key) const;

    /// The object that a value refers to; none when it is not a reference.
    std::optional<Place> place(std::optional<Reference> value) const;

    /// The value itself, or the object that it refers to; none when that is null.
    std::optional<Reference> target(std::optional<Reference> value) const;

    /// The name of an object's class, and whether that or a superclass has this name. Names are
    /// without the module that a phone may put before them ("Module.Name").
    std::optional<std::string_view> className(const PropertyList::Dictionary& entries) const;
    bool isKindOf(const PropertyList::Dictionary& entries, std::string_view className) const;

private:
    const PropertyList::Dictionary* classEntry(const PropertyList::Dictionary& entries) const;
    bool isText(std::optional<Reference> value, std::string_view text) const;

    PropertyList _list;
    std::vector<Reference> _objects;
    Place _root = null;
};

} // namespace KeloAPI
