#include "Loops.hpp"

#include "Host.hpp"

#include <algorithm>
#include <QSettings>

using namespace KeloAPI;

namespace {

constexpr auto longestEnd = std::chrono::seconds(2);

/// The records under way: an endpoint lives until its call has ended.
std::vector<std::weak_ptr<LoopsEndpoint>> underWay;

} // namespace

void countLoop(const QString& postId) {
    QSettings sums;
    sums.beginGroup("loops");
    sums.setValue(postId, sums.value(postId).toLongLong() + 1);
}

void submitLoops() {
    if (!Host::shared().isReady()) {
        return;
    }
    QSettings sums;
    sums.beginGroup("loops");
    std::erase_if(underWay, [](const auto& endpoint) { return endpoint.expired(); });
    for (const QString& postId : sums.childKeys()) {
        const auto post = std::make_shared<KLWatchPost>();
        post->postId = postId.toStdString();
        const auto endpoint = LoopsEndpoint::create();
        endpoint->submit(sums.value(postId).toLongLong(), post);
        underWay.push_back(endpoint);
        sums.remove(postId);
    }
}

void submitLoopsAtTheEnd() {
    submitLoops();
    const auto hasEnded = [](const auto& endpoint) { return endpoint.expired(); };
    MainQueue::main().runUntil(
        [&] { return std::all_of(underWay.begin(), underWay.end(), hasEnded); }, longestEnd);
}
