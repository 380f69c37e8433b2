#include "service/http/FileAnswer.hpp"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

namespace KeloService {
namespace {

/// A range within a file; empty when nothing of the file lies in what was asked for.
struct ByteRange {
    std::size_t first = 0;
    std::size_t count = 0;
};

/// Changes with every byte of the file: FNV-1a, 64 bits.
std::string entityTag(const std::string& bytes) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char byte : bytes) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
    }
    return '"' + std::to_string(hash) + '"';
}

std::optional<std::uint64_t> number(std::string_view text) {
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range) {
        return UINT64_MAX;
    }
    return error == std::errc() && end == text.data() + text.size() ? std::optional(value)
                                                                    : std::nullopt;
}

/// Reads "bytes=FIRST-LAST", "bytes=FIRST-" or "bytes=-COUNT"; absent for anything else.
std::optional<ByteRange> parseRange(std::string_view text, std::size_t size) {
    constexpr std::string_view unit = "bytes=";
    const std::size_t dash = text.find('-');
    if (!text.starts_with(unit) || dash == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view before = text.substr(unit.size(), dash - unit.size());
    const auto last = number(text.substr(dash + 1));
    if (before.empty()) {
        const auto count = std::min<std::uint64_t>(last.value_or(0), size);
        return last ? std::optional(ByteRange{size - count, count}) : std::nullopt;
    }
    const auto first = number(before);
    if (!first || (!last && dash + 1 != text.size()) || (last && *last < *first)) {
        return std::nullopt;
    }
    if (*first >= size) {
        return ByteRange{};
    }
    const std::uint64_t end = std::min<std::uint64_t>(last.value_or(size - 1), size - 1) + 1;
    return ByteRange{*first, end - *first};
}

std::optional<ByteRange> wantedRange(const Request& request, const std::string& tag,
                                     std::size_t size) {
    const auto range = request.header("Range");
    const auto onlyIf = request.header("If-Range");
    if (!range || request.method != "GET" || (onlyIf && *onlyIf != tag)) {
        return std::nullopt;
    }
    return parseRange(*range, size);
}

Answer nothingThere(std::size_t size) {
    Answer answer = errorAnswer(ServiceError(416, ErrorCode::rangeNotSatisfiable,
                                             "The range begins behind the file's end"));
    answer.headers.emplace_back("Content-Range", "bytes */" + std::to_string(size));
    return answer;
}

/// The answer without its body, and the part of the file that is to be the body: none when nothing
/// of the file was asked for.
std::pair<Answer, std::optional<ByteRange>> rangedAnswer(const Request& request,
                                                         const std::string& contentType,
                                                         const std::string& tag, std::size_t size) {
    const auto range = wantedRange(request, tag, size);
    if (range && range->count == 0) {
        return {nothingThere(size), std::nullopt};
    }
    Answer answer;
    answer.contentType = contentType;
    answer.headers = {{"Accept-Ranges", "bytes"}, {"ETag", tag}};
    if (range) {
        answer.status = 206;
        answer.headers.emplace_back("Content-Range",
                                    "bytes " + std::to_string(range->first) + "-" +
                                        std::to_string(range->first + range->count - 1) + "/" +
                                        std::to_string(size));
    }
    return {std::move(answer), range.value_or(ByteRange{0, size})};
}

} // namespace

Answer fileAnswer(const Request& request, const std::string& contentType, std::string bytes) {
    auto [answer, part] = rangedAnswer(request, contentType, entityTag(bytes), bytes.size());
    if (part) {
        answer.body =
            part->count == bytes.size() ? std::move(bytes) : bytes.substr(part->first, part->count);
    }
    return std::move(answer);
}

Answer fileAnswer(const Request& request, const std::string& contentType, AnswerStream file,
                  const std::string& tag) {
    auto [answer, part] = rangedAnswer(request, contentType, '"' + tag + '"', file.bytes);
    if (part) {
        answer.stream =
            AnswerStream{part->count, [first = part->first, read = std::move(file.read)](
                                          std::uint64_t offset, std::size_t count) {
                             return read(first + offset, count);
                         }};
    }
    return std::move(answer);
}

} // namespace KeloService
