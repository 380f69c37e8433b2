#pragma once

#include <KeloAPI/http/HeaderFields.hpp>
#include <KeloAPI/http/internal/Secrets.hpp>

#include <cstddef>
#include <set>
#include <string>
#include <string_view>

namespace KeloAPI::fakes {

/// Blanks the secrets of exchanges: what stands under secret names, and the same values wherever
/// else they stand, as they are or in percent escapes, base64 or the escapes of JSON. Values of
/// fewer than 8 characters, and of letters alone, are blanked under their names only: they may be
/// words of any text. One thread at a time.
class Blanker {
public:
    explicit Blanker(SecretNames names);
    Blanker(const Blanker&) = delete;
    Blanker& operator=(const Blanker&) = delete;
    ~Blanker() = default;

    const SecretNames& names() const { return _names; }
    void addName(std::string_view name) { _names.add(name); }

    /// Header fields; those among `secretFields` are secrets whatever their names.
    HeaderFields fields(const HeaderFields& fields,
                        const std::set<std::string, HeaderNameLess>& secretFields = {});
    /// A URL, or what is said in an error.
    std::string text(std::string_view text);
    /// What a request carries; users' names are blanked, too, which are public elsewhere.
    std::string requestBody(std::string_view body);
    std::string responseBody(std::string_view body);

    /// Only the values that were found before under secret names.
    std::string withoutKnownValues(std::string text) const;
    /// The same for a body that was blanked before.
    std::string bodyWithoutKnownValues(std::string_view body) const;

private:
    struct LongerFirst {
        bool operator()(const std::string& a, const std::string& b) const {
            return a.size() != b.size() ? a.size() > b.size() : a < b;
        }
    };

    std::string bodyUnderNames(std::string_view body, const SecretNames& names,
                               const SecretListener& listener) const;
    void learn(std::string_view value);
    void learnForms(std::string_view value);
    void learnField(std::string_view name, std::string_view value);
    void learnCookies(std::string_view cookies, std::string_view separator);

    SecretNames _names;
    SecretNames _userNames;
    SecretListener _learn;
    /// Each form of each value; those within others come behind them.
    std::set<std::string, LongerFirst> _known;
};

} // namespace KeloAPI::fakes
