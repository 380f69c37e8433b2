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
    KLUserMosaic(std::shared_ptr<KLPagedData> users, std::string title, std::string description,
                 std::string link, std::string reference, bool closeable)
        : KLFeedInsert(std::move(reference), closeable)
        , _users(std::move(users))
        , _title(std::move(title))
        , _subtitle(std::move(description))
        , _link(std::move(link)) {
        require(_users != nullptr, "a mosaic of users needs a list of users");
    }

    /// Never null.
    const std::shared_ptr<KLPagedData>& users() const { return _users; }
    const std::string& title() const { return _title; }       ///< As given.
    const std::string& subtitle() const { return _subtitle; } ///< The description that was given.
    const std::string& link() const { return _link; }         ///< As given; where the card leads.

private:
    std::shared_ptr<KLPagedData> _users;
    std::string _title;
    std::string _subtitle;
    std::string _link;
};

} // namespace KeloAPI
