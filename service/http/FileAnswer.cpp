#include "service/http/FileAnswer.hpp"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

namespace KeloService {
namespace {

/// A range within a file; empty when nothing of the file lies in what was asked for.
struct ByteRange {
    std::int64_t first = 0;
    std::int64_t count = 0;
};

/// The one range that is asked for; absent where the whole file is to be sent.
std::optional<ByteRange> wantedRange(const Request& request, const std::string& tag,
                                     std::int64_t size) {
    const auto onlyIf = request.header("If-Range");
    if (request.ranges.size() != 1 || request.method != "GET" || (onlyIf && *onlyIf != tag)) {
        return std::nullopt;
    }
    const auto [first, last] = request.ranges.front();
    if (first < 0) {
        const std::int64_t count = std::min(last, size);
        return last < 0 ? std::nullopt : std::optional(ByteRange{size - count, count});
    }
    const std::int64_t end = last < 0 ? size : std::min(last + 1, size);
    return first >= size ? ByteRange{} : ByteRange{first, end - first};
}

std::string contentRange(const ByteRange& range) {
    return std::to_string(range.first) + "-" + std::to_string(range.first + range.count - 1);
}

} // namespace

Answer fileAnswer(const Request& request, const std::string& contentType, AnswerStream file,
                  const std::string& tag) {
    const std::string entityTag = '"' + tag + '"';
    const auto size = static_cast<std::int64_t>(file.bytes);
    const std::string total = "/" + std::to_string(size);
    const auto range = wantedRange(request, entityTag, size);
    if (range && range->count == 0) {
        Answer answer = errorAnswer(ServiceError(416, "The range begins behind the file's end"));
        answer.headers.emplace_back("Content-Range", "bytes *" + total);
        return answer;
    }
    Answer answer;
    answer.contentType = contentType;
    answer.headers = {{"Accept-Ranges", "bytes"}, {"ETag", entityTag}};
    if (range) {
        answer.status = 206;
        answer.headers.emplace_back("Content-Range", "bytes " + contentRange(*range) + total);
    }
    const ByteRange part = range.value_or(ByteRange{0, size});
    const auto first = static_cast<std::uint64_t>(part.first);
    answer.stream =
        AnswerStream{static_cast<std::uint64_t>(part.count),
                     [first, read = std::move(file.read)](std::uint64_t offset, std::size_t count) {
                         return read(first + offset, count);
                     }};
    return answer;
}

} // namespace KeloService
