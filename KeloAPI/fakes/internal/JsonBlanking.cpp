#include <KeloAPI/base/internal/Ascii.hpp>
#include <KeloAPI/fakes/internal/JsonBlanking.hpp>
#include <KeloAPI/json/internal/JsonWriter.hpp>
#include <KeloAPI/json/Json.hpp>

#include <algorithm>
#include <cstddef>
#include <optional>

namespace KeloAPI::fakes {

namespace {

/// The text that stands between quotes; as it stands, where its escapes cannot be read.
std::string unescapedText(std::string_view inner) {
    if (inner.find('\\') != inner.npos) {
        std::string quotedInner = "\"";
        const auto document = JsonDocument::parse(quotedInner.append(inner).append("\""));
        if (document) {
            return std::string(document.value().root().text().value_or(inner));
        }
    }
    return std::string(inner);
}

/// Goes through a text once, from its start to its end, and copies it.
class JsonCopy {
public:
    JsonCopy(std::string_view json, const SecretNames& names, const SecretListener& listener,
             const KnownBlanking& known)
        : _json(json)
        , _names(names)
        , _listener(listener)
        , _known(known) {}

    std::string make() {
        while (_at < _json.size()) {
            const char c = _json[_at];
            if (c == '"') {
                copyText();
            } else if (c == '-' || Ascii::isDigit(c)) {
                copyNumber();
            } else {
                passMark(c);
            }
        }
        return std::move(_copy);
    }

private:
    bool isInSecret() const { return _isUnderSecretName || _secretDepth > 0; }

    void passMark(char c) {
        if (c == '{' || c == '[') {
            ++_depth;
            if (_isUnderSecretName && _secretDepth == 0) {
                _secretDepth = _depth;
            }
        } else if (c == '}' || c == ']') {
            _secretDepth = _depth == _secretDepth ? 0 : _secretDepth;
            _depth -= _depth > 0 ? 1 : 0;
        }
        if (!Ascii::isBlank(c) && c != ':') {
            _isUnderSecretName = false;
        }
        _copy += c;
        ++_at;
    }

    void copyText() {
        const std::string_view inner = _json.substr(_at + 1, endOfText() - _at - 1);
        _at += 1 + inner.size();
        const bool isClosed = _at < _json.size();
        _at += isClosed ? 1 : 0;
        const std::size_t next = _json.find_first_not_of(" \t\r\n", _at);
        _copy += '"';
        if (next != _json.npos && _json[next] == ':') {
            _isUnderSecretName = _names.contains(unescapedText(inner));
            _copy += _known(std::string(inner));
        } else {
            _copy += blankedValue(inner);
            _isUnderSecretName = false;
        }
        _copy += isClosed ? "\"" : "";
    }

    /// Where the closing quote stands, or the end of a text that has none.
    std::size_t endOfText() const {
        std::size_t at = _at + 1;
        while (at < _json.size() && _json[at] != '"') {
            at += _json[at] == '\\' ? 2U : 1U;
        }
        return std::min(at, _json.size());
    }

    std::string blankedValue(std::string_view inner) {
        if (isInSecret() && !inner.empty()) {
            tell(unescapedText(inner));
            return std::string(blankedSecret);
        }
        const std::string text = unescapedText(inner);
        if (looksLikeJson(text) && text.size() < inner.size()) {
            const std::string blanked = blankedJson(text, _names, _listener, _known);
            const auto written = jsonText(ParameterValue(blanked));
            return blanked == text || !written ? std::string(inner)
                                               : written->substr(1, written->size() - 2);
        }
        return _known(withoutSecrets(inner, _names, _listener));
    }

    void copyNumber() {
        const std::size_t end =
            std::min(_json.find_first_not_of("+-.0123456789Ee", _at), _json.size());
        const std::string_view number = _json.substr(_at, end - _at);
        _at = end;
        if (isInSecret()) {
            tell(number);
            _copy += '0';
        } else {
            _copy += _known(std::string(number)) == number ? number : "0";
        }
        _isUnderSecretName = false;
    }

    void tell(std::string_view secret) const {
        if (_listener && secret != blankedSecret) {
            _listener(secret);
        }
    }

    const std::string_view _json;
    const SecretNames& _names;
    const SecretListener& _listener;
    const KnownBlanking& _known;
    std::string _copy;
    std::size_t _at = 0;
    std::size_t _depth = 0;
    /// That of the object or list under a secret name that is gone through; 0 outside.
    std::size_t _secretDepth = 0;
    bool _isUnderSecretName = false;
};

} // namespace

bool looksLikeJson(std::string_view text) {
    const std::size_t first = text.find_first_not_of("\xEF\xBB\xBF \t\r\n");
    return first != text.npos && (text[first] == '{' || text[first] == '[');
}

std::string blankedJson(std::string_view json, const SecretNames& names,
                        const SecretListener& listener, const KnownBlanking& known) {
    return JsonCopy(json, names, listener, known).make();
}

} // namespace KeloAPI::fakes
