#include "service/http/Request.hpp"

#include <strings.h>

#include <charconv>

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

bool equalIgnoringCase(std::string_view left, std::string_view right) {
    return left.size() == right.size() && strncasecmp(left.data(), right.data(), left.size()) == 0;
}

} // namespace

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

std::string_view Request::path() const {
    return std::string_view(target).substr(0, target.find('?'));
}

std::string_view Request::rawQuery() const {
    const std::size_t mark = target.find('?');
    return mark == std::string::npos ? std::string_view()
                                     : std::string_view(target).substr(mark + 1);
}

std::optional<std::string> Request::header(std::string_view name) const {
    for (const auto& [key, value] : headers) {
        if (equalIgnoringCase(key, name)) {
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
    std::string_view whole = path();
    if (!whole.starts_with('/')) {
        return found;
    }
    whole.remove_prefix(1);
    for (;;) {
        const std::size_t end = whole.find('/');
        found.push_back(percentDecode(whole.substr(0, end), false));
        if (end == std::string_view::npos) {
            return found;
        }
        whole.remove_prefix(end + 1);
    }
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

} // namespace KeloService
