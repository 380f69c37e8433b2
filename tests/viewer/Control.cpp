// A socket by which a test drives the viewer: it is linked in, and sleeps unless
// KELO_VIEWER_CONTROL names a path. Each line is a command; each reply is one line, and the bytes
// of a picture behind it.
//
// NAME is an item's object name, or "window".
//
//     rect NAME         x, y, width and height in the window, or "none"
//     click NAME
//     drag NAME DY      presses in its middle, moves by DY pixels and lets go
//     eval NAME CODE    the value of an expression in the item's scope
//     shot NAME         "WIDTH HEIGHT", then 4 bytes for each pixel: blue, green, red, 255
//     frames            forgets, and tells of the frames while the feed moved: how many, and of the
//                       latest the milliseconds behind its forerunner, by the clock and in the
//                       time that all threads of the process computed
#include <ctime>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QLocalServer>
#include <QLocalSocket>
#include <QMouseEvent>
#include <QQmlContext>
#include <QQmlExpression>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTimer>

namespace {

QQuickWindow* theWindow() {
    return qobject_cast<QQuickWindow*>(QGuiApplication::topLevelWindows().value(0));
}

/// The item of that name, the one that is shown first.
QQuickItem* itemNamed(QQuickItem* root, const QString& name) {
    for (QQuickItem* child : root->childItems()) {
        if (child->objectName() == name && child->isVisible()) {
            return child;
        }
        if (QQuickItem* found = child->isVisible() ? itemNamed(child, name) : nullptr) {
            return found;
        }
    }
    return nullptr;
}

qint64 ownMicroseconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return time.tv_sec * 1'000'000 + time.tv_nsec / 1000;
}

class Control : public QObject {
public:
    explicit Control(const QString& path) {
        QLocalServer::removeServer(path);
        _server.listen(path);
        connect(&_server, &QLocalServer::newConnection, this, [this] {
            auto* socket = _server.nextPendingConnection();
            connect(socket, &QLocalSocket::readyRead, socket, [this, socket] {
                while (socket->canReadLine()) {
                    socket->write(reply(QString::fromUtf8(socket->readLine()).trimmed()));
                }
            });
        });
    }

private:
    QByteArray reply(const QString& line) {
        QQuickWindow* window = theWindow();
        if (!window) {
            return "none\n";
        }
        if (!_isTiming) {
            _isTiming = true;
            connect(window, &QQuickWindow::frameSwapped, this, [this] { frameCame(); });
        }
        const QString command = line.section(' ', 0, 0);
        if (command == "frames") {
            return frames();
        }
        const QString name = line.section(' ', 1, 1);
        QQuickItem* item =
            name == "window" ? window->contentItem() : itemNamed(window->contentItem(), name);
        if (!item) {
            return "none\n";
        }
        const QRect rect =
            item->mapRectToScene(QRectF(0, 0, item->width(), item->height())).toAlignedRect();
        const QString rest = line.section(' ', 2);
        if (command == "rect") {
            return QString("%1 %2 %3 %4\n")
                .arg(rect.x())
                .arg(rect.y())
                .arg(rect.width())
                .arg(rect.height())
                .toUtf8();
        }
        if (command == "click") {
            return drag(*window, rect.center(), 0);
        }
        if (command == "drag") {
            return drag(*window, rect.center(), rest.toInt());
        }
        if (command == "eval") {
            QQmlExpression expression(qmlContext(item), item, rest);
            const QVariant value = expression.evaluate();
            return (expression.hasError() ? expression.error().toString() : value.toString())
                       .simplified()
                       .toUtf8() +
                   "\n";
        }
        return shot(*window, rect);
    }

    static QByteArray drag(QQuickWindow& window, QPointF from, int dy) {
        const auto send = [&](QEvent::Type type, QPointF at, Qt::MouseButtons buttons) {
            QMouseEvent event(type, at, window.mapToGlobal(at),
                              type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons,
                              Qt::NoModifier);
            QCoreApplication::sendEvent(&window, &event);
        };
        constexpr int steps = 10;
        send(QEvent::MouseButtonPress, from, Qt::LeftButton);
        for (int step = 1; dy != 0 && step <= steps; ++step) {
            send(QEvent::MouseMove, from + QPointF(0, qreal(dy) * step / steps), Qt::LeftButton);
        }
        send(QEvent::MouseButtonRelease, from + QPointF(0, dy), Qt::NoButton);
        return "done\n";
    }

    static QByteArray shot(QQuickWindow& window, QRect rect) {
        const QImage picture = window.grabWindow().copy(rect).convertToFormat(QImage::Format_RGB32);
        QByteArray bytes = QString("%1 %2\n").arg(picture.width()).arg(picture.height()).toUtf8();
        for (int y = 0; y < picture.height(); ++y) {
            bytes.append(reinterpret_cast<const char*>(picture.constScanLine(y)),
                         qsizetype{4} * picture.width());
        }
        return bytes;
    }

    void frameCame() {
        const QQuickItem* feed = itemNamed(theWindow()->contentItem(), "feed");
        const bool moves = feed && feed->property("moving").toBool();
        const qint64 own = ownMicroseconds();
        if (moves && _moved) {
            ++_count;
            _latest = std::max(_latest, _clock.nsecsElapsed() / 1000);
            _latestOwn = std::max(_latestOwn, own - _own);
        }
        _moved = moves;
        _own = own;
        _clock.start();
    }

    QByteArray frames() {
        QByteArray told = QString("%1 %2 %3\n")
                              .arg(_count)
                              .arg(static_cast<double>(_latest) / 1000)
                              .arg(static_cast<double>(_latestOwn) / 1000)
                              .toUtf8();
        _count = 0;
        _latest = _latestOwn = 0;
        return told;
    }

    QLocalServer _server;
    QElapsedTimer _clock;
    qint64 _own = 0;
    bool _isTiming = false;
    bool _moved = false;
    int _count = 0;
    qint64 _latest = 0;
    qint64 _latestOwn = 0;
};

void startControl() {
    const QString path = qEnvironmentVariable("KELO_VIEWER_CONTROL");
    if (!path.isEmpty()) {
        new Control(path); // as long as the process
    }
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(startControl)
