#pragma once

#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/model/KLFeedInsert.hpp>

#include <memory>

namespace KeloAPI {

class KLPagedData;

/// How a mosaic of posts is laid out.
enum class KLPostsMosaicType : int {
    Unknown,        ///< No layout was named.
    AvatarIncluded, ///< The thumbnails with an avatar.
    Default,        ///< The usual layout.
    SmallThumbnails ///< The thumbnails in a smaller size.
};

/// A card of several posts, made by the host. Does not change once made, but for its list.
class KELO_API KLPostsMosaic final : public KLFeedInsert {
public:
    /// `description` becomes the subtitle. `posts` must not be null.
    KLPostsMosaic(std::shared_ptr<KLPagedData> list, std::string titleText, std::string description,
                  std::string target, std::string name, bool mayClose, KLPostsMosaicType layout,
                  bool mayPin)
        : KLFeedInsert(std::move(name), mayClose)
        , posts(std::move(list))
        , title(std::move(titleText))
        , subtitle(std::move(description))
        , link(std::move(target))
        , type(layout)
        , pinnable(mayPin) {
        require(posts != nullptr, "a mosaic of posts needs a list of posts");
    }

    /// Never null.
    const std::shared_ptr<KLPagedData> posts;
    const std::string title;      ///< As given.
    const std::string subtitle;   ///< The description that was given.
    const std::string link;       ///< As given; where the card leads.
    const KLPostsMosaicType type; ///< How the posts are laid out.
    const bool pinnable;          ///< As given: whether the card can be pinned.
};

} // namespace KeloAPI
