#include <KeloAPI/archive/internal/BinaryPropertyList.hpp>
#include <KeloAPI/archive/internal/KeyedArchive.hpp>
#include <KeloAPI/archive/internal/KeyedArchiveLayout.hpp>

#include <algorithm>
#include <utility>

namespace KeloAPI {

namespace Layout = KeyedArchiveLayout;

namespace {

/// How much the entry of a class may hold, and how many superclasses a class may have. Many objects
/// share one, and each looks through it.
constexpr std::size_t maximumClassEntries = 64;

/// A class's name without its module.
std::string_view plainName(std::string_view name) {
    return name.substr(name.rfind('.') + 1);
}

} // namespace

std::optional<KeyedArchive> KeyedArchive::read(const Data& archive) {
    auto list = BinaryPropertyList::read(archive.bytes());
    if (!list) {
        return std::nullopt;
    }
    KeyedArchive result;
    result._list = std::move(*list);
    const auto* outermost = result._list.get<PropertyList::Dictionary>(result._list.root);
    if (outermost == nullptr) {
        return std::nullopt;
    }
    const auto version = result.value(*outermost, Layout::version);
    const auto* number = version ? result._list.get<Number>(*version) : nullptr;
    const auto objects = result.value(*outermost, Layout::objects);
    const auto* array = objects ? result._list.get<PropertyList::Array>(*objects) : nullptr;
    const auto top = result.value(*outermost, Layout::top);
    const auto* roots = top ? result._list.get<PropertyList::Dictionary>(*top) : nullptr;
    if (!result.isText(result.value(*outermost, Layout::archiver), Layout::archiverName) ||
        number == nullptr || !(*number == Number::of(Layout::versionNumber)) || array == nullptr ||
        array->elements.empty() || roots == nullptr) {
        return std::nullopt;
    }
    result._objects = array->elements;
    const auto root = result.value(*roots, Layout::root);
    const auto place = root ? result.place(*root) : std::nullopt;
    if (!place) {
        return std::nullopt;
    }
    result._root = *place;
    return result;
}

std::optional<PropertyList::Reference> KeyedArchive::value(const PropertyList::Dictionary& entries,
                                                           std::string_view key) const {
    const auto found = std::find_if(entries.entries.begin(), entries.entries.end(),
                                    [&](const auto& entry) { return isText(entry.first, key); });
    return found == entries.entries.end() ? std::nullopt : std::optional(found->second);
}

std::optional<KeyedArchive::Place> KeyedArchive::place(Reference value) const {
    const auto* uid = _list.get<PropertyList::UID>(value);
    if (uid == nullptr || uid->value >= _objects.size()) {
        return std::nullopt;
    }
    return static_cast<Place>(uid->value);
}

std::optional<PropertyList::Reference> KeyedArchive::target(Reference value) const {
    if (_list.get<PropertyList::UID>(value) == nullptr) {
        return value;
    }
    const auto object = place(value);
    return object && *object != null ? std::optional(_objects[*object]) : std::nullopt;
}

const PropertyList::Dictionary*
KeyedArchive::classEntry(const PropertyList::Dictionary& entries) const {
    const auto reference = value(entries, Layout::objectClass);
    const auto object = reference ? place(*reference) : std::nullopt;
    const auto* entry = object ? this->entries(*object) : nullptr;
    return entry != nullptr && entry->entries.size() <= maximumClassEntries ? entry : nullptr;
}

std::optional<std::string_view>
KeyedArchive::className(const PropertyList::Dictionary& entries) const {
    const auto* entry = classEntry(entries);
    const auto name = entry == nullptr ? std::nullopt : value(*entry, Layout::className);
    const auto* text = name ? _list.get<std::string>(*name) : nullptr;
    return text == nullptr ? std::nullopt : std::optional(plainName(*text));
}

bool KeyedArchive::isKindOf(const PropertyList::Dictionary& entries,
                            std::string_view className) const {
    const auto* entry = classEntry(entries);
    if (entry == nullptr) {
        return false;
    }
    const auto isName = [&](std::optional<Reference> value) {
        const auto* name = value ? _list.get<std::string>(*value) : nullptr;
        return name != nullptr && plainName(*name) == className;
    };
    if (isName(value(*entry, Layout::className))) {
        return true;
    }
    const auto chain = value(*entry, Layout::classChain);
    const auto* names = chain ? _list.get<PropertyList::Array>(*chain) : nullptr;
    return names != nullptr && names->elements.size() <= maximumClassEntries &&
           std::any_of(names->elements.begin(), names->elements.end(), isName);
}

bool KeyedArchive::isText(std::optional<Reference> value, std::string_view text) const {
    const auto* characters = value ? _list.get<std::string>(*value) : nullptr;
    return characters != nullptr && *characters == text;
}

} // namespace KeloAPI
