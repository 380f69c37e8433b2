#pragma once

#include <KeloAPI/base/Number.hpp>

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace KeloAPI {

/// A property list as its binary format holds it: a table of values, in which a container names its
/// elements by their places. A value that is met twice is one value; nothing nests in memory.
struct PropertyList {
    using Reference = std::uint32_t;

    struct Null {};
    struct Date {
        double secondsSince2001;
    };
    struct Data {
        std::string bytes;
    };
    struct UID {
        std::uint64_t value;
    };
    struct Array {
        std::vector<Reference> elements;
    };
    struct Set {
        std::vector<Reference> elements;
    };
    /// In the order of the file. The keys are texts; where one occurs twice, the first counts.
    struct Dictionary {
        std::vector<std::pair<Reference, Reference>> entries;
    };
    /// Texts are UTF-8. A `Number` stands for booleans, integers and reals.
    using Value = std::variant<Null, Number, Date, Data, std::string, UID, Array, Set, Dictionary>;

    std::vector<Value> values;
    Reference root = 0;

    /// Adds a value of one of the kinds and gives its place.
    template <class T>
    Reference add(T value) {
        values.emplace_back(std::in_place_type<T>, std::move(value));
        return static_cast<Reference>(values.size() - 1);
    }

    /// The value at a place of the table, when it is of this kind; null otherwise.
    template <class T>
    const T* get(Reference at) const {
        return at < values.size() ? std::get_if<T>(&values[at]) : nullptr;
    }
};

} // namespace KeloAPI
