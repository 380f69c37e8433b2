// The item that shows a looping video. It decodes on a thread of its own, only while it plays.
#pragma once

#include <qqmlregistration.h>

#include <mutex>
#include <QImage>
#include <QQuickItem>
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
    LoopItem();

    bool hasPicture() const { return !_picture.isNull(); }

Q_SIGNALS:
    void sourceChanged();
    void playingChanged();
    void hasPictureChanged();
    void looped(); ///< The video has come round.

protected:
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) override;

private:
    void restart();
    void play(const std::stop_token& stop, const std::string& path, QSize size);
    void showNext();

    QUrl _source;
    bool _isPlaying = false;
    QImage _picture;
    bool _isNew = false; // the picture is not in the scene graph yet

    std::mutex _mutex; // guards what the thread hands over
    QImage _next;
    bool _hasLooped = false;
    std::jthread _thread; // the last member: it ends before those go that it uses
};
