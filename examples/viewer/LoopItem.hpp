// The item that shows a looping video. It decodes on a thread of its own, only while it plays.
#pragma once

#include "Decoder.hpp"

#include <qqmlregistration.h>

#include <condition_variable>
#include <mutex>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSGImageNode>
#include <thread>

class LoopItem : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    /// The file; empty until it is there.
    Q_PROPERTY(QUrl source MEMBER _source NOTIFY sourceChanged)
    Q_PROPERTY(bool playing MEMBER _isPlaying NOTIFY playingChanged)
    /// Whether a picture of the video is shown.
    Q_PROPERTY(bool hasPicture READ hasPicture NOTIFY hasPictureChanged)

public:
    LoopItem() {
        setFlag(ItemHasContents);
        connect(this, &LoopItem::sourceChanged, this, &LoopItem::restart);
        connect(this, &LoopItem::playingChanged, this, &LoopItem::restart);
    }

    bool hasPicture() const { return !_picture.isNull(); }

Q_SIGNALS:
    void sourceChanged();
    void playingChanged();
    void hasPictureChanged();
    void looped(); ///< The video has come round.

protected:
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) override {
        auto* node = static_cast<QSGImageNode*>(old);
        if (!hasPicture()) {
            delete node;
            return nullptr;
        }
        if (node == nullptr) {
            node = window()->createImageNode();
            node->setOwnsTexture(true);
            _isNew = true;
        }
        if (std::exchange(_isNew, false)) {
            node->setTexture(window()->createTextureFromImage(_picture));
        }
        node->setRect(boundingRect());
        return node;
    }

private:
    void restart() {
        _thread = {};
        _next = {};
        _hasLooped = false;
        const QSize size = QSizeF(width(), height()).toSize();
        if (_isPlaying && !_source.isEmpty() && !size.isEmpty()) {
            _thread = std::jthread([this, path = _source.toLocalFile().toStdString(),
                                    size](const std::stop_token& stop) { play(stop, path, size); });
        } else if (hasPicture()) {
            _picture = {};
            update();
            Q_EMIT hasPictureChanged();
        }
    }

    /// Plays over and over, on the thread. Each picture goes to the main thread when it is due,
    /// which leaves out those that it has no time for.
    void play(const std::stop_token& stop, const std::string& path, QSize size) {
        Decoder decoder(path, size);
        std::condition_variable_any never;
        // One clock for all rounds: what a seam costs is made up for before the next frame is due.
        auto start = std::chrono::steady_clock::now();
        std::chrono::nanoseconds length{};
        while (!stop.stop_requested()) {
            const auto frame = decoder.next();
            if (!frame && length == length.zero()) {
                return;
            }
            if (!frame) {
                start += std::exchange(length, {});
                decoder.rewind();
                const std::lock_guard lock(_mutex);
                _hasLooped = true;
                continue;
            }
            length = frame->end;
            std::unique_lock lock(_mutex);
            never.wait_until(lock, stop, start + frame->start, [] { return false; });
            if (!stop.stop_requested()) {
                _next = frame->picture;
                QMetaObject::invokeMethod(this, &LoopItem::showNext, Qt::QueuedConnection);
            }
        }
    }

    void showNext() {
        std::unique_lock lock(_mutex);
        if (_next.isNull()) {
            return; // it was shown in the place of an earlier one, or playing has ended
        }
        const bool isFirst = !hasPicture();
        _picture = std::exchange(_next, {});
        const bool hasLooped = std::exchange(_hasLooped, false);
        lock.unlock();
        _isNew = true;
        update();
        if (isFirst) {
            Q_EMIT hasPictureChanged();
        }
        if (hasLooped) {
            Q_EMIT looped();
        }
    }

    QUrl _source;
    bool _isPlaying = false;
    QImage _picture;
    bool _isNew = false; // the picture is not in the scene graph yet

    std::mutex _mutex; // guards what the thread hands over
    QImage _next;
    bool _hasLooped = false;
    std::jthread _thread; // the last member: it ends before those go that it uses
};
