#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace KeloAPI {

/// An immutable run of bytes that is cheap to pass on: copies share the bytes.
class Data {
public:
    /// No bytes.
    Data() = default;

    /// Takes the text's bytes over; nothing is copied.
    explicit Data(std::string bytes) {
        auto owner = std::make_shared<const std::string>(std::move(bytes));
        _bytes = std::as_bytes(std::span(owner->data(), owner->size()));
        _owner = std::move(owner);
    }

    /// Refers to bytes that `owner` keeps alive and unchanged; nothing is copied.
    Data(std::shared_ptr<const void> owner, std::span<const std::byte> bytes)
        : _owner(std::move(owner))
        , _bytes(bytes) {}

    /// Valid as long as a copy of this object.
    std::span<const std::byte> bytes() const { return _bytes; }
    std::size_t size() const { return _bytes.size(); } ///< How many bytes.
    bool empty() const { return _bytes.empty(); }      ///< Whether it has a size of 0.

    /// The same bytes as characters.
    std::string_view text() const {
        return {reinterpret_cast<const char*>(_bytes.data()), _bytes.size()};
    }

private:
    std::shared_ptr<const void> _owner;
    std::span<const std::byte> _bytes;
};

} // namespace KeloAPI
