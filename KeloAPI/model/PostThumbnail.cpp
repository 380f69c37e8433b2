#include <KeloAPI/archive/KeyedArchiver.hpp>
#include <KeloAPI/archive/KeyedUnarchiver.hpp>
#include <KeloAPI/model/PostThumbnail.hpp>

namespace KeloAPI {

void PostThumbnail::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeURL(url, "url");
    coder.encodeInt64(width, "width");
    coder.encodeInt64(height, "height");
}

std::shared_ptr<PostThumbnail> PostThumbnail::initWithCoder(KeyedUnarchiver& coder) {
    auto url = coder.decodeURL("url");
    if (!url) {
        return nullptr;
    }
    return std::make_shared<PostThumbnail>(*std::move(url), coder.decodeInt64("width"),
                                           coder.decodeInt64("height"));
}

} // namespace KeloAPI
