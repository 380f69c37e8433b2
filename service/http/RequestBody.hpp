#pragma once

#include <functional>
#include <string_view>
#include <utility>

namespace KeloService {

/// The body of a request whose route takes it as it arrives; never held as a whole.
class RequestBody {
public:
    /// Takes the next bytes; false to hear of no more.
    using Take = std::function<bool(std::string_view bytes)>;
    using Source = std::function<bool(const Take& take)>;

    /// `source` gives the bytes to the taker, and false when they broke off.
    explicit RequestBody(Source source)
        : source_(std::move(source)) {}

    /// Gives the whole body to `take`. False when the client left before its end, or `take` gave
    /// up. Can be called once.
    bool read(const Take& take) {
        bool taken = true;
        isRead_ = true;
        isWhole_ = source_([&](std::string_view bytes) {
            taken = taken && take(bytes);
            return true;
        });
        return taken && isWhole_;
    }

    /// Throws away what no route wanted, so that the next request is found behind it.
    void skip() {
        if (!isRead_) {
            read([](std::string_view) { return true; });
        }
    }

    /// Whether all of it has arrived.
    bool isWhole() const { return isWhole_; }

private:
    Source source_;
    bool isRead_ = false;
    bool isWhole_ = false;
};

} // namespace KeloService
