// The item that shows a looping video. It decodes on a thread of its own, only while it plays.
#pragma once

#include <qqmlregistration.h>

#include <atomic>
#include <QImage>
#include <QQuickItem>
#include <thread>

namespace KeloViewer {

class LoopItem : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    /// The path of the file; empty until it is there.
    Q_PROPERTY(QString source MEMBER _source NOTIFY sourceChanged)
    Q_PROPERTY(bool playing MEMBER _isPlaying NOTIFY playingChanged)
    /// Whether a picture of the video is shown.
    Q_PROPERTY(bool hasPicture READ hasPicture NOTIFY hasPictureChanged)

public:
    explicit LoopItem(QQuickItem* parent = nullptr);
    ~LoopItem() override;

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
    void show(const QImage& picture, bool hasLooped);

    QString _source;
    bool _isPlaying = false;
    QImage _picture;
    bool _isNew = false; // the picture is not in the scene graph yet
    std::atomic<bool> _isOneOnItsWay = false;
    std::atomic<bool> _roundMissed = false;
    int _generation = 0; // pictures of an earlier thread are dropped
    std::jthread _thread;
};

} // namespace KeloViewer
