#include <KeloAPI/model/PostThumbnail.hpp>

#include <utility>

namespace KeloAPI {

PostThumbnail::PostThumbnail(URL url, std::int64_t width, std::int64_t height)
    : _url(std::move(url))
    , _width(width)
    , _height(height) {}

PostThumbnail::~PostThumbnail() = default;

} // namespace KeloAPI
