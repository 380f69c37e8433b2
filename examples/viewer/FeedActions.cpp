// What a user does with the posts and cards of a feed.
#include "FeedModel.hpp"
#include "LoopSums.hpp"

#include <QPointer>

namespace KeloViewer {

using namespace KeloAPI;

void FeedModel::act(int row, Action action) {
    const RowPointer one = _rows.at(static_cast<std::size_t>(row));
    const auto post = one->post->post;
    const auto start = [this](const std::shared_ptr<Toggle>& toggle, const Send& send) {
        toggle->shown = !toggle->shown;
        rowsChanged();
        settle(toggle, send);
    };
    switch (action) {
    case Like:
        start({one, &one->like}, [post](bool on, const Done& done) {
            LikeActionEndpoint::create(post)->toggle(
                on, [post, done](const auto& result) { done(result.error()); });
        });
        break;
    case Rekelo:
        start({one, &one->rekelo}, [post](bool on, const Done& done) {
            RekeloActionEndpoint::create(post)->toggle(on, [=](const auto& result) {
                if (const auto* success = result.success()) {
                    post->currentUserRekelo = on ? success->item : nullptr;
                }
                done(result.error());
            });
        });
        break;
    case Follow:
        start(one->follow, [id = one->post->authorId](bool on, const Done& done) {
            UserEndpoint::create(id)->setFollowingOnTwitter(
                on, [done](const UserResult& result) { done(result.error()); });
        });
        break;
    case Less:
        start({one, &one->less}, [post](bool on, const Done& done) {
            RecommendationsEndpoint::create()->addPostFeedback(
                *post->postId, on ? RecommendationBoost::Negative : RecommendationBoost::Neutral,
                [done](const RecommendationResult& result) { done(result.error()); });
        });
        break;
    }
}

/// Sends what is shown until the service has it; one call at a time.
void FeedModel::settle(const std::shared_ptr<Toggle>& toggle, const Send& send) {
    const bool on = toggle->shown;
    if (toggle->isBusy || on == toggle->confirmed) {
        return;
    }
    toggle->isBusy = true;
    const auto ended = [model = QPointer(this), toggle, send, on](bool isTaken) {
        toggle->isBusy = false;
        if (isTaken) {
            toggle->confirmed = on;
        } else {
            toggle->shown = toggle->confirmed;
        }
        if (model) {
            model->rowsChanged();
            model->settle(toggle, send);
        }
    };
    send(on, [ended](const Error* error) {
        Host::shared().hear(
            error, [ended] { ended(true); }, [ended] { ended(false); });
    });
}

void FeedModel::closeCard(int row) {
    const RowPointer closed = _rows.at(static_cast<std::size_t>(row));
    beginRemoveRows({}, row, row);
    _rows.erase(_rows.begin() + row);
    endRemoveRows();
    const auto endpoint = Endpoint::create(Api::session(SessionType::Authenticated));
    endpoint->setPath(closed->card->closePath.value_or(""));
    endpoint->setMethod(Method::POST);
    endpoint->request(std::make_shared<KLEmptyParser>(),
                      [model = QPointer(this), closed, row](const auto&, const auto&, const auto&,
                                                            const std::optional<Error>& error) {
                          Host::shared().hear(
                              error, [] {},
                              [=] {
                                  if (model) {
                                      model->insert(std::min(row, model->rowCount()), {closed});
                                  }
                              });
                      });
}

void FeedModel::looped(int row) {
    const auto& post = _rows.at(static_cast<std::size_t>(row))->post;
    LoopSums::shared().add(*post->post->postId);
    if (post->loops) {
        post->loops->addLoops(1);
    }
    rowsChanged();
}

} // namespace KeloViewer
