#pragma once

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/api/Outcome.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>

namespace KeloAPI {

/// What an action on a post brings.
template <class T>
struct PostActionSuccess {
    /// The first item of the response; null when the response held none.
    std::shared_ptr<T> item;
};

/// How an action on a post ended.
template <class T>
using PostActionResult = Outcome<PostActionSuccess<T>>;

/// Does something to a post, or takes it back; the response is parsed by a parser of type `P`. Does
/// not keep the post alive, and does not change it: that is the host's business after a success.
template <class P>
class PostActionEndpoint : public Endpoint {
public:
    /// Composes `path` for doing (`on`) or taking back. Leaves it as it was where the post has gone
    /// or lacks an identifier that the path needs; the base does so always.
    virtual void setPathFor([[maybe_unused]] bool on) {}

    /// An endpoint without a path of its own, on the authenticated session with
    /// `Api::sessionDelegate()`. A null parser stops the process; a null post is treated like one
    /// that no longer exists.
    static std::shared_ptr<PostActionEndpoint> create(const std::shared_ptr<KLWatchPost>& post,
                                                      std::shared_ptr<P> parser) {
        return make<PostActionEndpoint>(post, std::move(parser));
    }

    /// Null when the post has gone.
    std::shared_ptr<KLWatchPost> post() const { return _post.lock(); }
    /// Reads the response. Never null.
    const std::shared_ptr<P>& parser() const { return _parser; }

    /// POST to do it, DELETE to take it back. The completion runs on the main queue. Where
    /// `setPathFor` leaves the path as it was, the request goes there.
    void toggle(bool on,
                std::function<void(const PostActionResult<typename P::T>& result)> completion) {
        detail::requireCompletion(completion);
        setMethod(on ? Method::POST : deleteMethod);
        setPathFor(on);
        request(_parser, detail::firstItem([completion = std::move(completion)](
                                               std::shared_ptr<typename P::T> item,
                                               std::optional<Error> error) {
                    using Result = PostActionResult<typename P::T>;
                    completion(error ? Result(typename Result::Error{*std::move(error)})
                                     : Result(PostActionSuccess<typename P::T>{std::move(item)}));
                }));
    }

protected:
    /// For derived classes, through `make`.
    PostActionEndpoint(Key key, const std::shared_ptr<KLWatchPost>& post, std::shared_ptr<P> parser)
        : Endpoint(key, Api::session(SessionType::Authenticated))
        , _post(post)
        , _parser(std::move(parser)) {
        require(_parser != nullptr, "an action needs a parser");
    }

private:
    const std::weak_ptr<KLWatchPost> _post;
    const std::shared_ptr<P> _parser;
};

} // namespace KeloAPI
