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
    PostThumbnail(URL image, std::int64_t pixelsWide, std::int64_t pixelsHigh)
        : url(std::move(image))
        , width(pixelsWide)
        , height(pixelsHigh) {}

    const URL url;             ///< Where the image is.
    const std::int64_t width;  ///< In pixels.
    const std::int64_t height; ///< In pixels.

    /// Its name in an archive.
    static constexpr std::string_view archivedClassName = "PostThumbnail";
    std::vector<std::string_view> archivedClassNames() const override {
        return {archivedClassName};
    }
    void encodeWithCoder(KeyedArchiver& coder) const override;
    /// Null without an address; missing sizes are 0.
    static std::shared_ptr<PostThumbnail> initWithCoder(KeyedUnarchiver& coder);
};

} // namespace KeloAPI
