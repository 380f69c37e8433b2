#include <KeloAPI/archive/internal/BinaryPropertyList.hpp>
#include <KeloAPI/archive/internal/KeyedArchive.hpp>
#include <KeloAPI/archive/internal/KeyedArchiveLayout.hpp>

#include <algorithm>
#include <utility>

namespace KeloAPI {

namespace Layout = KeyedArchiveLayout;
using Dictionary = PropertyList::Dictionary;

namespace {

/// How much the entry of a class may hold, and how many superclasses a class may have. Many objects
/// share one, and each looks through it.
constexpr std::size_t maxClassEntries = 64;

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
    const auto* outermost = result.get<Dictionary>(result._list.root);
    if (outermost == nullptr) {
        return std::nullopt;
    }
    const auto* version = result.get<Number>(result.value(*outermost, Layout::version));
    const auto* objects =
        result.get<PropertyList::Array>(result.value(*outermost, Layout::objects));
    const auto* top = result.get<Dictionary>(result.value(*outermost, Layout::top));
    if (!result.isText(result.value(*outermost, Layout::archiver), Layout::archiverName) ||
        version == nullptr || !(*version == Number::of(Layout::versionNumber)) ||
        objects == nullptr || objects->elements.empty() || top == nullptr) {
        return std::nullopt;
    }
    result._objects = objects->elements;
    const auto root = result.place(result.value(*top, Layout::root));
    if (!root) {
        return std::nullopt;
    }
    result._root = *root;
    return result;
}

std::optional<PropertyList::Reference> KeyedArchive::value(const Dictionary& entries,
                                                           std::string_view key) const {
    const auto found = std::find_if(entries.entries.begin(), entries.entries.end(),
                                    [&](const auto& entry) { return isText(entry.first, key); });
    return found == entries.entries.end() ? std::nullopt : std::optional(found->second);
}

std::optional<KeyedArchive::Place> KeyedArchive::place(std::optional<Reference> value) const {
    const auto* uid = get<PropertyList::UID>(value);
    if (uid == nullptr || uid->value >= _objects.size()) {
        return std::nullopt;
    }
    return static_cast<Place>(uid->value);
}

std::optional<PropertyList::Reference> KeyedArchive::target(std::optional<Reference> value) const {
    if (get<PropertyList::UID>(value) == nullptr) {
        return value;
    }
    const auto object = place(value);
    return object && *object != null ? std::optional(_objects[*object]) : std::nullopt;
}

const Dictionary* KeyedArchive::classEntry(const Dictionary& entries) const {
    const auto object = place(value(entries, Layout::objectClass));
    const auto* entry = object ? this->entries(*object) : nullptr;
    return entry != nullptr && entry->entries.size() <= maxClassEntries ? entry : nullptr;
}

std::optional<std::string_view> KeyedArchive::className(const Dictionary& entries) const {
    const auto* entry = classEntry(entries);
    const auto name = entry == nullptr ? std::nullopt : value(*entry, Layout::className);
    const auto* text = get<std::string>(name);
    return text == nullptr ? std::nullopt : std::optional(plainName(*text));
}

bool KeyedArchive::isKindOf(const Dictionary& entries, std::string_view className) const {
    const auto* entry = classEntry(entries);
    if (entry == nullptr) {
        return false;
    }
    const auto isName = [&](std::optional<Reference> value) {
        const auto* name = get<std::string>(value);
        return name != nullptr && plainName(*name) == className;
    };
    if (isName(value(*entry, Layout::className))) {
        return true;
    }
    const auto* names = get<PropertyList::Array>(value(*entry, Layout::classChain));
    return names != nullptr && names->elements.size() <= maxClassEntries &&
           std::any_of(names->elements.begin(), names->elements.end(), isName);
}

bool KeyedArchive::isText(std::optional<Reference> value, std::string_view text) const {
    const auto* characters = get<std::string>(value);
    return characters != nullptr && *characters == text;
}

} // namespace KeloAPI
