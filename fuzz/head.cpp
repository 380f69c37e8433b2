// Any lines as the head of a response.
#include <KeloAPI/curl/internal/ResponseHead.hpp>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

using namespace KeloAPI;

constexpr std::size_t maxHeadBytes = 1024;

void expect(bool holds) {
    if (!holds) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    ResponseHead head(maxHeadBytes);
    int finished = 0;
    std::size_t taken = 0;
    for (std::size_t at = 0; at < input.size();) {
        const std::size_t end = std::min(input.find('\n', at), input.size() - 1) + 1;
        const auto progress = head.take(input.substr(at, end - at));
        taken += end - at;
        at = end;
        finished += progress == ResponseHead::Progress::Finished ? 1 : 0;
        expect((progress == ResponseHead::Progress::TooLong) == (taken > maxHeadBytes));
        expect(finished <= 1 && head.isFinished() == (finished == 1));
    }
    if (head.isFinished()) {
        expect(head.statusCode() >= 200 || head.statusCode() == 101);
    }
    std::size_t kept = 0;
    for (const auto& [name, value] : head.fields()) {
        expect(head.fields().contains(name));
        kept += name.size();
    }
    expect(kept <= maxHeadBytes && head.expectedContentLength() >= -1);
    head.contentCoding();
    return 0;
}
