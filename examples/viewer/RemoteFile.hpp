// A file of the service, fetched once and kept in the library's cache.
#pragma once

#include <KeloAPI/KeloAPI.hpp>

#include <qqmlregistration.h>

#include <QUrl>

class RemoteFile : public QObject {
    Q_OBJECT
    QML_ELEMENT
    /// Where the service has it; empty for none. The file is fetched as soon as this is set.
    Q_PROPERTY(QString url MEMBER _url NOTIFY urlChanged)
    /// Where it lies on this machine; empty until it is there.
    Q_PROPERTY(QUrl file READ file NOTIFY fileChanged)

public:
    RemoteFile();

    QUrl file() const { return _file; }

    using Hear = std::function<void(const QUrl& file)>;
    /// Fetches through the queue of the file's kind. Hears on the main thread where the file is,
    /// and nothing where it could not be fetched.
    static void fetch(const QString& url, KeloAPI::QueuePriority priority, const Hear& hear);

    /// Gives up the videos that wait, where those are many. Nobody hears of them.
    static void forgetVideosFarAway();
    /// Deletes all but the newest files, when nothing is shown.
    static void trim();

Q_SIGNALS:
    void urlChanged();
    void fileChanged();

private:
    void fetch();

    QString _url;
    QUrl _file;
};
