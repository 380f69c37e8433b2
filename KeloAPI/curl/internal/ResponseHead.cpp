#include <KeloAPI/base/internal/Ascii.hpp>
#include <KeloAPI/curl/internal/ResponseHead.hpp>

#include <algorithm>
#include <charconv>

namespace KeloAPI {

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

std::int64_t ResponseHead::expectedContentLength() const {
    if (contentCoding() != ContentCoding::None) {
        return -1;
    }
    const auto field = _fields.find("Content-Length");
    if (field == _fields.end() || _fields.contains("Transfer-Encoding")) {
        return -1;
    }
    const std::string& text = field->second;
    std::int64_t length = -1;
    const auto end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, length);
    return read.ec == std::errc() && read.ptr == end && length >= 0 ? length : -1;
}

} // namespace KeloAPI
