#pragma once

#include <KeloAPI/archive/internal/PropertyList.hpp>

#include <cstdio>
#include <string>
#include <vector>

namespace KeloAPI::testing {

/// The text of a property list, which is the same for lists of the same values whatever the places
/// of these: the script plistlib_oracle.py writes it too.
class PropertyListText {
public:
    static std::string of(const PropertyList& list) { return PropertyListText(list).at(list.root); }

private:
    explicit PropertyListText(const PropertyList& list)
        : _list(list) {}

    std::string at(PropertyList::Reference reference) const {
        return std::visit([this](const auto& value) { return this->text(value); },
                          _list.values.at(reference));
    }

    template <class... Arguments>
    static std::string formatted(const char* format, Arguments... arguments) {
        char buffer[64];
        std::snprintf(buffer, sizeof buffer, format, arguments...);
        return buffer;
    }

    static std::string text(PropertyList::Null) { return "null"; }

    static std::string text(const Number& number) {
        if (number.kind() == Number::Kind::Boolean) {
            return number.boolValue() ? "true" : "false";
        }
        if (number.kind() == Number::Kind::Double) {
            return formatted("real(%.17g)", number.doubleValue());
        }
        return number.stringValue();
    }

    static std::string text(PropertyList::Date date) {
        return formatted("date(%.17g)", date.secondsSince2001);
    }

    static std::string text(const PropertyList::Data& data) {
        std::string result = "data(";
        for (const char c : data.bytes) {
            result += formatted("%02X", static_cast<unsigned char>(c));
        }
        return result + ")";
    }

    static std::string text(const std::string& characters) {
        std::string result = "'";
        for (const char c : characters) {
            const bool isPlain = c >= ' ' && c < '\x7F' && c != '\'' && c != '%';
            result +=
                isPlain ? std::string(1, c) : formatted("%%%02X", static_cast<unsigned char>(c));
        }
        return result + "'";
    }

    static std::string text(PropertyList::UID uid) {
        return formatted("UID(%llu)", static_cast<unsigned long long>(uid.value));
    }

    std::string text(const PropertyList::Array& array) const { return listOf(array.elements); }
    std::string text(const PropertyList::Set& set) const { return "set" + listOf(set.elements); }

    std::string listOf(const std::vector<PropertyList::Reference>& elements) const {
        std::string result;
        for (const auto element : elements) {
            result += (result.empty() ? "" : ", ") + at(element);
        }
        return "[" + result + "]";
    }

    std::string text(const PropertyList::Dictionary& dictionary) const {
        std::string result;
        for (const auto& [key, value] : dictionary.entries) {
            result += (result.empty() ? "" : ", ") + at(key) + ": " + at(value);
        }
        return "{" + result + "}";
    }

    const PropertyList& _list;
};

} // namespace KeloAPI::testing
