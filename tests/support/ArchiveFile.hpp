#pragma once

#include <KeloAPI/archive/internal/BinaryPropertyList.hpp>
#include <KeloAPI/base/Data.hpp>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace KeloAPI::testing {

/// A keyed archive put together by hand, so that every part of it can be wrong.
class ArchiveFile {
public:
    using Reference = PropertyList::Reference;
    using Value = PropertyList::Value;
    using Entries = std::vector<std::pair<std::string, Reference>>;

    ArchiveFile() { object(value(std::string("$null"))); }

    // Not inline: GCC 12 then takes the move of one kind for the use of another.
    [[gnu::noinline]] Reference value(Value value) {
        list.values.push_back(std::move(value));
        return static_cast<Reference>(list.values.size() - 1);
    }
    Reference text(const std::string& characters) { return list.add(characters); }
    Reference uid(std::uint64_t place) { return list.add(PropertyList::UID{place}); }
    Reference number(std::int64_t number) { return list.add(Number::of(number)); }
    Reference array(std::vector<Reference> elements) {
        return list.add(PropertyList::Array{std::move(elements)});
    }
    Reference dictionary(const Entries& entries) {
        PropertyList::Dictionary dictionary;
        for (const auto& [key, entry] : entries) {
            dictionary.entries.emplace_back(text(key), entry);
        }
        return list.add(std::move(dictionary));
    }

    /// Adds an object to the archive's list and gives a reference to it.
    Reference object(Reference value) {
        objects.push_back(value);
        return uid(objects.size() - 1);
    }
    /// A reference to a new entry of a class.
    Reference classNamed(const std::string& name, const std::string& superclass = "NSObject") {
        return object(dictionary(
            {{"$classname", text(name)}, {"$classes", array({text(name), text(superclass)})}}));
    }
    /// A reference to a new object of a class.
    Reference instance(const std::string& name, Entries entries,
                       const std::string& superclass = "NSObject") {
        entries.emplace_back("$class", classNamed(name, superclass));
        return object(dictionary(entries));
    }

    Entries outermost(Reference root) {
        return {{"$version", number(100000)},
                {"$archiver", text("NSKeyedArchiver")},
                {"$top", dictionary({{"root", root}})},
                {"$objects", array(objects)}};
    }
    Data bytes(const Entries& outermost) {
        list.root = dictionary(outermost);
        return Data(BinaryPropertyList::write(list));
    }
    Data bytes(Reference root) { return bytes(outermost(root)); }

    PropertyList list;
    std::vector<Reference> objects;
};

} // namespace KeloAPI::testing
