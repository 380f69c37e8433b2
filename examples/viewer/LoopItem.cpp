#include "LoopItem.hpp"

#include "Player.hpp"

#include <QQuickWindow>
#include <QSGImageNode>

namespace KeloViewer {

LoopItem::LoopItem(QQuickItem* parent)
    : QQuickItem(parent) {
    setFlag(ItemHasContents);
    connect(this, &LoopItem::sourceChanged, this, &LoopItem::restart);
    connect(this, &LoopItem::playingChanged, this, &LoopItem::restart);
}

LoopItem::~LoopItem() {
    _thread = {}; // ends it before the members go that it uses
}

void LoopItem::restart() {
    _thread = {};
    ++_generation;
    _isOneOnItsWay = false;
    if (_isPlaying && !_source.isEmpty() && width() >= 1 && height() >= 1) {
        // A picture that the window has no time for is left out. Nothing of the item is touched
        // here: the picture goes to the main thread.
        const auto hand = [this, generation = _generation](const QImage& picture, bool hasLooped) {
            const bool isRound = _roundMissed.exchange(false) || hasLooped;
            if (_isOneOnItsWay.exchange(true)) {
                _roundMissed = isRound;
                return;
            }
            QMetaObject::invokeMethod(
                this,
                [=, this] {
                    if (generation == _generation) {
                        show(picture, isRound);
                    }
                },
                Qt::QueuedConnection);
        };
        _thread = std::jthread(
            [hand, path = _source.toStdString(), size = QSizeF(width(), height()).toSize()](
                const std::stop_token& stop) { playOverAndOver(stop, path, size, hand); });
    } else if (hasPicture()) {
        _picture = {};
        update();
        Q_EMIT hasPictureChanged();
    }
}

void LoopItem::show(const QImage& picture, bool hasLooped) {
    _isOneOnItsWay = false;
    const bool isFirst = !hasPicture();
    _picture = picture;
    _isNew = true;
    update();
    if (isFirst) {
        Q_EMIT hasPictureChanged();
    }
    if (hasLooped) {
        Q_EMIT looped();
    }
}

QSGNode* LoopItem::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
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

} // namespace KeloViewer
