#include <KeloAPI/api/internal/Base64.hpp>
#include <KeloAPI/base/internal/Ascii.hpp>
#include <KeloAPI/base/internal/PercentDecoding.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/fakes/internal/Blanker.hpp>
#include <KeloAPI/fakes/internal/JsonBlanking.hpp>
#include <KeloAPI/json/internal/JsonWriter.hpp>

#include <algorithm>
#include <utility>

namespace KeloAPI::fakes {

namespace {

/// What base64 has of `value` alone, where `before` bytes stand in front of it.
std::string insideBase64(std::string_view value, std::size_t before) {
    const std::string text = base64Encoded(std::string(before, '\0').append(value));
    const std::size_t begin = (before * 8 + 5) / 6;
    const std::size_t end = (before + value.size()) * 8 / 6;
    return text.substr(begin, end - begin);
}

void replaceAll(std::string& text, std::string_view what, std::string_view by) {
    for (std::size_t at = text.find(what); at != std::string::npos;
         at = text.find(what, at + by.size())) {
        text.replace(at, what.size(), by);
    }
}

} // namespace

Blanker::Blanker(SecretNames names)
    : _names(std::move(names))
    , _learn([this](std::string_view secret) { learn(secret); }) {
    for (const char* name : {"email", "login", "phone", "phonenumber", "username"}) {
        _userNames.add(name);
    }
}

HeaderFields Blanker::fields(const HeaderFields& fields,
                             const std::set<std::string, HeaderNameLess>& secretFields) {
    HeaderFields blanked;
    for (const auto& [name, value] : fields) {
        const bool isSecret = _names.contains(name) || secretFields.contains(name);
        if (isSecret && !value.empty()) {
            learnField(name, value);
        }
        blanked.emplace(name,
                        isSecret && !value.empty() ? std::string(blankedSecret) : text(value));
    }
    for (auto& [name, value] : blanked) {
        value = withoutKnownValues(std::move(value)); // of the fields behind it, too
    }
    return blanked;
}

std::string Blanker::text(std::string_view text) {
    std::string blanked = withoutSecrets(text, _names, _learn);
    return withoutKnownValues(std::move(blanked));
}

std::string Blanker::requestBody(std::string_view body) {
    return bodyUnderNames(responseBody(body), _userNames, {});
}

std::string Blanker::responseBody(std::string_view body) {
    return bodyUnderNames(body, _names, _learn);
}

std::string Blanker::bodyWithoutKnownValues(std::string_view body) const {
    return bodyUnderNames(body, _names, {});
}

std::string Blanker::bodyUnderNames(std::string_view body, const SecretNames& names,
                                    const SecretListener& listener) const {
    const auto known = [this](std::string text) { return withoutKnownValues(std::move(text)); };
    if (!jsonText(ParameterValue(body))) {
        return known(std::string(body)); // no text
    }
    // What is not quite JSON may have a value across its texts.
    return known(looksLikeJson(body) ? blankedJson(body, names, listener, known)
                                     : withoutSecrets(body, names, listener));
}

std::string Blanker::withoutKnownValues(std::string text) const {
    for (const std::string& known : _known) {
        replaceAll(text, known, blankedSecret);
    }
    return text;
}

/// Beside the whole value, what follows a scheme ("Bearer ...") or a name ("sid=...").
void Blanker::learnField(std::string_view name, std::string_view value) {
    learn(value);
    if (Ascii::equalsIgnoringCase(name, "Cookie")) {
        return learnCookies(value, ";");
    }
    if (Ascii::equalsIgnoringCase(name, "Set-Cookie")) {
        return learnCookies(value, ","); // a ";" is followed by attributes
    }
    const std::size_t mark = value.find_first_of(" =");
    if (mark != value.npos) {
        const std::string_view rest = value.substr(mark + 1);
        learn(rest.substr(0, rest.find_first_of(";,")));
    }
}

/// The value of each cookie ("sid=...").
void Blanker::learnCookies(std::string_view cookies, std::string_view separator) {
    while (!cookies.empty()) {
        const std::string_view cookie = cookies.substr(0, cookies.find(separator));
        cookies.remove_prefix(std::min(cookie.size() + 1, cookies.size()));
        const std::string_view pair = cookie.substr(0, cookie.find(';'));
        const std::size_t mark = pair.find('=');
        if (mark != pair.npos) {
            learn(Ascii::trimmed(pair.substr(mark + 1)));
        }
    }
}

void Blanker::learn(std::string_view value) {
    learnForms(value);
    learnForms(percentDecoded(value));
}

void Blanker::learnForms(std::string_view value) {
    constexpr std::size_t fewestCharacters = 8;
    const bool isWord = std::all_of(value.begin(), value.end(), [](char c) {
        return Ascii::isAlphanumeric(c) && !Ascii::isDigit(c);
    });
    if (value.size() < fewestCharacters || isWord) {
        return;
    }
    _known.emplace(value);
    _known.insert(percentEncoded(value));
    if (const auto quoted = jsonText(ParameterValue(value))) {
        std::string inJson = quoted->substr(1, quoted->size() - 2);
        _known.insert(inJson);
        replaceAll(inJson, "/", "\\/");
        _known.insert(std::move(inJson));
    }
    for (std::size_t before = 0; before < 3; ++before) {
        _known.insert(insideBase64(value, before));
    }
}

} // namespace KeloAPI::fakes
