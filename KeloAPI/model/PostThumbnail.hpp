#pragma once

#include <KeloAPI/platform/Export.hpp>
#include <KeloAPI/platform/Object.hpp>
#include <KeloAPI/platform/URL.hpp>

#include <cstdint>

namespace KeloAPI {

/// A thumbnail image and its size in pixels. Does not change once made.
class KELO_API PostThumbnail final : public Object {
public:
    PostThumbnail(URL url, std::int64_t width, std::int64_t height);
    PostThumbnail() = delete;
    ~PostThumbnail() override;

    const URL& url() const { return _url; }
    std::int64_t width() const { return _width; }
    std::int64_t height() const { return _height; }

private:
    URL _url;
    std::int64_t _width;
    std::int64_t _height;
};

} // namespace KeloAPI
