// How often each video has come round on this device: kept in the settings until it is submitted.
#pragma once

#include "Host.hpp"

#include <algorithm>
#include <QSettings>

class Loops {
public:
    /// Counts a round of a post's video.
    static void count(const QString& postId) {
        QSettings sums;
        sums.beginGroup("loops");
        sums.setValue(postId, sums.value(postId).toLongLong() + 1);
    }

    /// Submits one record a post. What is submitted is forgotten, whatever becomes of it. Does
    /// nothing while the service cannot be reached.
    static void submit() {
        if (!Host::shared().isReady()) {
            return;
        }
        QSettings sums;
        sums.beginGroup("loops");
        std::erase_if(_underWay, hasEnded);
        for (const QString& postId : sums.childKeys()) {
            const auto post = std::make_shared<KeloAPI::KLWatchPost>();
            post->postId = postId.toStdString();
            const auto endpoint = KeloAPI::LoopsEndpoint::create();
            endpoint->submit(sums.value(postId).toLongLong(), post);
            _underWay.push_back(endpoint);
            sums.remove(postId);
        }
    }

    /// Submits, and runs the main queue for a moment until the records are out.
    static void submitAtTheEnd() {
        submit();
        KeloAPI::MainQueue::main().runUntil(
            [] { return std::all_of(_underWay.begin(), _underWay.end(), hasEnded); },
            std::chrono::seconds(2));
    }

private:
    using Call = std::weak_ptr<KeloAPI::LoopsEndpoint>;
    /// An endpoint lives until its call has ended.
    static bool hasEnded(const Call& call) { return call.expired(); }

    static inline std::vector<Call> _underWay;
};
