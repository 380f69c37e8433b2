#include "LoopSums.hpp"

#include "Host.hpp"

#include <algorithm>
#include <QSettings>

namespace KeloViewer {

using namespace KeloAPI;

namespace {

constexpr auto submitInterval = std::chrono::seconds(30);
constexpr auto longestEnd = std::chrono::seconds(2);

} // namespace

LoopSums& LoopSums::shared() {
    static LoopSums sums;
    return sums;
}

LoopSums::LoopSums() {
    QSettings kept;
    kept.beginGroup("loops");
    for (const QString& postId : kept.childKeys()) {
        _sums[postId.toStdString()] = kept.value(postId).toLongLong();
    }
    connect(&_timer, &QTimer::timeout, this, &LoopSums::submit);
    _timer.start(submitInterval);
}

void LoopSums::add(const std::string& postId) {
    ++_sums[postId];
    keep();
}

void LoopSums::submit() {
    if (!Host::shared().isReady()) {
        return;
    }
    for (const auto& [postId, count] : std::exchange(_sums, {})) {
        const auto post = std::make_shared<KLWatchPost>();
        post->postId = postId;
        const auto endpoint = LoopsEndpoint::create();
        endpoint->submit(count, post);
        _underWay.push_back(endpoint);
    }
    keep();
    std::erase_if(_underWay, [](const auto& call) { return call.expired(); });
}

void LoopSums::submitAtTheEnd() {
    submit();
    MainQueue::main().runUntil(
        [this] {
            return std::all_of(_underWay.begin(), _underWay.end(),
                               [](const auto& call) { return call.expired(); });
        },
        longestEnd);
}

void LoopSums::keep() const {
    QSettings kept;
    kept.remove("loops");
    for (const auto& [postId, count] : _sums) {
        kept.setValue("loops/" + QString::fromStdString(postId), static_cast<qlonglong>(count));
    }
}

} // namespace KeloViewer
