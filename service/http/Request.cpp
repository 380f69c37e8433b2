#include "service/http/Request.hpp"

#include <strings.h>

#include <algorithm>

namespace KeloService {
namespace {

std::string_view untilSeparator(std::string_view& rest, char separator) {
    const std::size_t end = rest.find(separator);
    const std::string_view part = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    return part;
}

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/// `plusIsBlank` as in query strings. Broken escapes stay as they are.
std::string percentDecode(std::string_view text, bool plusIsBlank) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned value = 0;
        if (text[i] == '%' && i + 2 < text.size() &&
            std::from_chars(text.data() + i + 1, text.data() + i + 3, value, 16).ptr ==
                text.data() + i + 3) {
            decoded += static_cast<char>(value);
            i += 2;
        } else {
            decoded += plusIsBlank && text[i] == '+' ? ' ' : text[i];
        }
    }
    return decoded;
}

} // namespace

std::string_view Request::path() const {
    return std::string_view(target).substr(0, target.find('?'));
}

std::string_view Request::rawQuery() const {
    std::string_view rest = target;
    untilSeparator(rest, '?');
    return rest;
}

std::optional<std::string> Request::header(std::string_view name) const {
    for (const auto& [key, value] : headers) {
        if (key.size() == name.size() && strncasecmp(key.data(), name.data(), name.size()) == 0) {
            return value;
        }
    }
    return std::nullopt;
}

std::optional<std::string> Request::parameter(std::string_view name) const {
    std::string_view rest = rawQuery();
    while (!rest.empty()) {
        std::string_view value = untilSeparator(rest, '&');
        if (percentDecode(untilSeparator(value, '='), true) == name) {
            return percentDecode(value, true);
        }
    }
    return std::nullopt;
}

std::vector<std::string> Request::segments() const {
    std::vector<std::string> found;
    std::string_view rest = path();
    while (rest.starts_with('/')) {
        rest.remove_prefix(1);
        const std::string_view segment = rest.substr(0, rest.find('/'));
        found.push_back(percentDecode(segment, false));
        rest.remove_prefix(segment.size());
    }
    return found;
}

bool Request::isControl() const {
    return path().starts_with("/_service/");
}

Request parseHead(std::string_view head) {
    Request request;
    std::string_view line = trimmed(untilSeparator(head, '\n'));
    request.method = untilSeparator(line, ' ');
    request.target = untilSeparator(line, ' ');
    while (!head.empty()) {
        std::string_view field = trimmed(untilSeparator(head, '\n'));
        if (field.empty()) {
            break;
        }
        const std::string_view name = untilSeparator(field, ':');
        request.headers.emplace_back(name, trimmed(field));
    }
    return request;
}

bool RequestBody::read(const Take& take) {
    const Source source = std::exchange(source_, nullptr);
    bool taken = true;
    // What is not taken comes all the same, so that the next request is found behind it.
    const bool isWhole = !source || source([&](std::string_view bytes) {
        taken = taken && take(bytes);
        return true;
    });
    return taken && isWhole;
}

std::size_t RequestRecorder::mayRead(std::size_t wanted) const {
    if (!headComplete_) {
        return std::min<std::size_t>(wanted, 1);
    }
    if (chunked_) {
        return wanted;
    }
    return std::min<std::uint64_t>(wanted, announcedBytes_ - std::min(announcedBytes_, bodyBytes_));
}

void RequestRecorder::record(std::string_view bytes) {
    if (headComplete_) {
        bodyBytes_ += bytes.size();
        body_ += bytes.substr(0, keptBodyBytes - std::min(keptBodyBytes, body_.size()));
        return;
    }
    head_ += bytes;
    headComplete_ = head_.ends_with("\r\n\r\n");
    if (headComplete_) {
        const Request request = parseHead(head_);
        chunked_ = request.header("Transfer-Encoding").has_value();
        const std::string length = request.header("Content-Length").value_or("");
        std::from_chars(length.data(), length.data() + length.size(), announcedBytes_);
    }
}

} // namespace KeloService
