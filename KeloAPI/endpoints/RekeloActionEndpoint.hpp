#pragma once

#include <KeloAPI/endpoints/PostActionEndpoint.hpp>
#include <KeloAPI/model/KLRekelo.hpp>

namespace KeloAPI {

/// Reposts a post and takes that back: POST posts/, the post's id and /repost; DELETE the same with
/// a slash and the id of the signed-in user's repost.
class KELO_API RekeloActionEndpoint : public PostActionEndpoint<RekeloParser> {
public:
    /// On the authenticated session, with `Api::sessionDelegate()`.
    static std::shared_ptr<RekeloActionEndpoint> create(const std::shared_ptr<KLWatchPost>& post);

    /// Taking back leaves the path as it was where the post knows no repost of the user's.
    void setPathFor(bool on) override;

protected:
    /// For derived classes, through `make`.
    RekeloActionEndpoint(Key key, const std::shared_ptr<KLWatchPost>& post);
};

} // namespace KeloAPI
