#include <KeloAPI/base/internal/Ascii.hpp>
#include <KeloAPI/curl/internal/ResponseHead.hpp>

#include <algorithm>
#include <charconv>
#include <optional>

namespace KeloAPI {

namespace {

/// The number of which the list consists; absent where it has none or several.
std::optional<std::int64_t> lengthIn(std::string_view list) {
    std::optional<std::int64_t> length;
    for (std::size_t begin = 0; begin <= list.size();) {
        const auto end = std::min(list.find(',', begin), list.size());
        const std::string_view text = Ascii::trimmed(list.substr(begin, end - begin));
        std::int64_t number = -1;
        const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
        const bool isNumber = read.ec == std::errc() && read.ptr == text.data() + text.size();
        if (!isNumber || number < 0 || (length && number != *length)) {
            return std::nullopt;
        }
        length = number;
        begin = end + 1;
    }
    return length;
}

} // namespace

ResponseHead::Progress ResponseHead::take(std::string_view line) {
    _size += line.size();
    if (_size > _maxBytes) {
        return Progress::TooLong;
    }
    if (_finished) {
        return Progress::Unfinished;
    }
    if (line.starts_with("HTTP/")) {
        begin(Ascii::trimmed(line));
    } else if (!Ascii::trimmed(line).empty()) {
        takeField(line);
    } else if (_statusCode >= 200 || _statusCode == 101) {
        _finished = true;
        return Progress::Finished;
    }
    return Progress::Unfinished;
}

void ResponseHead::begin(std::string_view statusLine) {
    _statusCode = 0;
    _fields.clear();
    _lastValue = nullptr;
    const auto blank = statusLine.find(' ');
    if (blank != std::string_view::npos) {
        const std::string_view code = Ascii::trimmed(statusLine.substr(blank));
        std::from_chars(code.data(), code.data() + code.size(), _statusCode);
    }
}

void ResponseHead::takeField(std::string_view line) {
    const bool continued = line.front() == ' ' || line.front() == '\t';
    if (continued) {
        if (_lastValue != nullptr) {
            _lastValue->append(" ").append(Ascii::trimmed(line));
        }
        return;
    }
    const auto colon = line.find(':');
    if (colon == std::string_view::npos) {
        return;
    }
    const std::string_view value = Ascii::trimmed(line.substr(colon + 1));
    const auto [at, isNew] =
        _fields.try_emplace(std::string(Ascii::trimmed(line.substr(0, colon))), value);
    if (!isNew) {
        at->second.append(", ").append(value);
    }
    _lastValue = &at->second;
}

ResponseHead::ContentCoding ResponseHead::contentCoding() const {
    const auto field = _fields.find("Content-Encoding");
    std::string_view list = field == _fields.end() ? std::string_view() : field->second;
    auto coding = ContentCoding::None;
    while (!list.empty()) {
        const auto end = std::min(list.find(','), list.size());
        const std::string_view name = Ascii::trimmed(list.substr(0, end));
        list.remove_prefix(std::min(end + 1, list.size()));
        if (name.empty() || Ascii::equalsIgnoringCase(name, "identity")) {
            continue;
        }
        const bool gzip =
            Ascii::equalsIgnoringCase(name, "gzip") || Ascii::equalsIgnoringCase(name, "x-gzip");
        coding = gzip && coding == ContentCoding::None ? ContentCoding::Gzip : ContentCoding::Other;
    }
    return coding;
}

bool ResponseHead::hasSoundFraming() const {
    const auto coding = _fields.find("Transfer-Encoding");
    if (coding != _fields.end()) {
        return Ascii::equalsIgnoringCase(coding->second, "chunked");
    }
    const auto length = _fields.find("Content-Length");
    return length == _fields.end() || lengthIn(length->second).has_value();
}

bool ResponseHead::endsWithConnection() const {
    return _statusCode != 204 && _statusCode != 304 && !_fields.contains("Content-Length") &&
           !_fields.contains("Transfer-Encoding");
}

std::int64_t ResponseHead::expectedContentLength() const {
    const auto field = _fields.find("Content-Length");
    if (field == _fields.end() || _fields.contains("Transfer-Encoding") ||
        contentCoding() != ContentCoding::None) {
        return -1;
    }
    return lengthIn(field->second).value_or(-1);
}

} // namespace KeloAPI
