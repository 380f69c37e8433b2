// What the viewer reads of a record beyond the library's own post: each of the record's other
// fields with the library's parser of that field, off the main thread.
#pragma once

#include <KeloAPI/KeloAPI.hpp>

#include <QVariant>

namespace KeloViewer {

/// The URL as the source of an image; empty where there is none.
QString pictureSource(const std::optional<KeloAPI::URL>& url);

/// A post, and what the view shows of its record: texts, with their links set off, and pictures.
class FeedPost final : public KeloAPI::Object {
public:
    std::shared_ptr<KeloAPI::KLWatchPost> post; ///< Never null once parsed.
    std::shared_ptr<KeloAPI::LoopData> loops;   ///< Null where the record has none.
    std::string authorId;
    qlonglong likes = 0;
    qlonglong rekelos = 0;
    QVariantMap shown; ///< What is missing is an empty text.
};

class FeedPostParser final : public KeloAPI::JsonParser<FeedPost> {
public:
    std::shared_ptr<FeedPost> parse(const KeloAPI::JsonObject& json) const override;
};

/// A card between the posts of a feed.
class FeedCard final : public KeloAPI::Object {
public:
    std::int64_t position = 0;            ///< How many posts stand before it.
    std::optional<std::string> closePath; ///< Where its closing is told; absent where it stays.
    QVariantMap shown;                    ///< What its kind does not have is an empty text.
};

class FeedCardParser final : public KeloAPI::JsonParser<FeedCard> {
public:
    std::shared_ptr<FeedCard> parse(const KeloAPI::JsonObject& json) const override;
};

} // namespace KeloViewer
