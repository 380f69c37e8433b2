#pragma once

#include <KeloAPI/archive/Archivable.hpp>
#include <KeloAPI/base/URL.hpp>

#include <memory>
#include <utility>

namespace KeloAPI {

/// A thumbnail image and its size in pixels. Does not change once made.
class KELO_API PostThumbnail final : public Archivable {
public:
    /// Stores everything as given.
    PostThumbnail(URL url, std::int64_t width, std::int64_t height)
        : _url(std::move(url))
        , _width(width)
        , _height(height) {}

    const URL& url() const { return _url; }         ///< Where the image is.
    std::int64_t width() const { return _width; }   ///< In pixels.
    std::int64_t height() const { return _height; } ///< In pixels.

    /// Its name in an archive.
    static constexpr std::string_view archivedClassName = "PostThumbnail";
    std::vector<std::string_view> archivedClassNames() const override {
        return {archivedClassName};
    }
    void encodeWithCoder(KeyedArchiver& coder) const override;
    /// Null without an address; missing sizes are 0.
    static std::shared_ptr<PostThumbnail> initWithCoder(KeyedUnarchiver& coder);

private:
    URL _url;
    std::int64_t _width;
    std::int64_t _height;
};

} // namespace KeloAPI
