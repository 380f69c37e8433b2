#pragma once

#include <KeloAPI/endpoints/PostActionEndpoint.hpp>
#include <KeloAPI/model/KLLike.hpp>

namespace KeloAPI {

/// Likes and unlikes a post: POST and DELETE posts/, the post's id and /likes.
class KELO_API LikeActionEndpoint : public PostActionEndpoint<LikeParser> {
public:
    /// On the authenticated session, with `Api::sessionDelegate()`.
    static std::shared_ptr<LikeActionEndpoint> create(const std::shared_ptr<KLWatchPost>& post);

    void setPathFor(bool on) override;

protected:
    /// For derived classes, through `make`.
    LikeActionEndpoint(Key key, const std::shared_ptr<KLWatchPost>& post);
};

} // namespace KeloAPI
