#pragma once

#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/model/KLFeedInsert.hpp>

#include <memory>

namespace KeloAPI {

class KLPagedData;

/// A card of several users, made by the host. Does not change once made, but for its list.
class KELO_API KLUserMosaic final : public KLFeedInsert {
public:
    /// `description` becomes the subtitle. `users` must not be null.
    KLUserMosaic(std::shared_ptr<KLPagedData> list, std::string titleText, std::string description,
                 std::string target, std::string name, bool mayClose)
        : KLFeedInsert(std::move(name), mayClose)
        , users(std::move(list))
        , title(std::move(titleText))
        , subtitle(std::move(description))
        , link(std::move(target)) {
        require(users != nullptr, "a mosaic of users needs a list of users");
    }

    /// Never null.
    const std::shared_ptr<KLPagedData> users;
    const std::string title;    ///< As given.
    const std::string subtitle; ///< The description that was given.
    const std::string link;     ///< As given; where the card leads.
};

} // namespace KeloAPI
