// The item that shows a looping video. It decodes on a thread of its own, only while it plays.
#pragma once

#include "Decoder.hpp"

#include <qqmlregistration.h>

#include <condition_variable>
#include <mutex>
#include <QPainter>
#include <QQuickPaintedItem>
#include <thread>

class LoopItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    /// The file; empty until it is there.
    Q_PROPERTY(QUrl source MEMBER _source NOTIFY sourceChanged)
    Q_PROPERTY(bool playing MEMBER _isPlaying NOTIFY playingChanged)
    /// Whether a picture of the video is shown.
    Q_PROPERTY(bool hasPicture READ hasPicture NOTIFY hasPictureChanged)

public:
    LoopItem() {
        connect(this, &LoopItem::sourceChanged, this, &LoopItem::restart);
        connect(this, &LoopItem::playingChanged, this, &LoopItem::restart);
    }

    bool hasPicture() const { return !_picture.isNull(); }
    void paint(QPainter* painter) override { painter->drawImage(boundingRect(), _picture); }

Q_SIGNALS:
    void sourceChanged();
    void playingChanged();
    void hasPictureChanged();
    void looped(); ///< The video has come round.

private:
    void restart() {
        _thread = {};
        _next = {};
        const QSize size = QSizeF(width(), height()).toSize();
        if (_isPlaying && !_source.isEmpty() && !size.isEmpty()) {
            _thread = std::jthread([this, path = _source.toLocalFile().toStdString(),
                                    size](const std::stop_token& stop) { play(stop, path, size); });
        } else {
            setPicture({});
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
                QMetaObject::invokeMethod(this, &LoopItem::looped, Qt::QueuedConnection);
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
        const QImage picture = std::exchange(_next, {});
        lock.unlock();
        if (!picture.isNull()) { // else it was shown in the place of an earlier one
            setPicture(picture);
        }
    }

    void setPicture(const QImage& picture) {
        const bool hadPicture = hasPicture();
        _picture = picture;
        setFlag(ItemHasContents, hasPicture());
        update();
        if (hasPicture() != hadPicture) {
            Q_EMIT hasPictureChanged();
        }
    }

    QUrl _source;
    bool _isPlaying = false;
    QImage _picture;

    std::mutex _mutex;
    QImage _next;         // handed over by the thread, under the mutex
    std::jthread _thread; // the last member: it ends before those go that it uses
};
