#pragma once

#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/model/KLFeedInsert.hpp>

#include <memory>

namespace KeloAPI {

class KLPagedData;

/// How a mosaic of posts is laid out.
enum class KLPostsMosaicType : int { Unknown, AvatarIncluded, Default, SmallThumbnails };

/// A card of several posts, made by the host. Does not change once made, but for its list.
class KELO_API KLPostsMosaic final : public KLFeedInsert {
public:
    /// `description` becomes the subtitle. `posts` must not be null.
    KLPostsMosaic(std::shared_ptr<KLPagedData> posts, std::string title, std::string description,
                  std::string link, std::string reference, bool closeable, KLPostsMosaicType type,
                  bool pinnable)
        : KLFeedInsert(std::move(reference), closeable)
        , _posts(std::move(posts))
        , _title(std::move(title))
        , _subtitle(std::move(description))
        , _link(std::move(link))
        , _type(type)
        , _pinnable(pinnable) {
        require(_posts != nullptr, "a mosaic of posts needs a list of posts");
    }

    /// Never null.
    const std::shared_ptr<KLPagedData>& posts() const { return _posts; }
    const std::string& title() const { return _title; }       ///< As given.
    const std::string& subtitle() const { return _subtitle; } ///< The description that was given.
    const std::string& link() const { return _link; }         ///< As given; where the card leads.
    KLPostsMosaicType type() const { return _type; }          ///< How the posts are laid out.
    bool pinnable() const { return _pinnable; } ///< As given: whether the card can be pinned.

private:
    std::shared_ptr<KLPagedData> _posts;
    std::string _title;
    std::string _subtitle;
    std::string _link;
    KLPostsMosaicType _type;
    bool _pinnable;
};

} // namespace KeloAPI
