#include "service/http/RequestRecorder.hpp"

#include "service/http/Request.hpp"

#include <algorithm>
#include <charconv>

namespace KeloService {

void RequestRecorder::startRequest() {
    *this = RequestRecorder();
}

std::size_t RequestRecorder::mayRead(std::size_t wanted) const {
    if (!headComplete_) {
        return std::min<std::size_t>(wanted, 1);
    }
    if (chunked_) {
        return wanted;
    }
    return static_cast<std::size_t>(
        std::min<std::uint64_t>(wanted, announcedBytes_ - std::min(announcedBytes_, bodyBytes_)));
}

void RequestRecorder::record(std::string_view bytes) {
    if (!headComplete_) {
        head_ += bytes;
        if (head_.ends_with("\r\n\r\n")) {
            finishHead();
        }
        return;
    }
    bodyBytes_ += bytes.size();
    body_ += bytes.substr(0, keptBodyBytes - std::min(keptBodyBytes, body_.size()));
}

void RequestRecorder::finishHead() {
    headComplete_ = true;
    const Request request = parseHead(head_);
    chunked_ = request.header("Transfer-Encoding").has_value();
    if (const auto length = request.header("Content-Length")) {
        std::from_chars(length->data(), length->data() + length->size(), announcedBytes_);
    }
}

} // namespace KeloService
