// The app as the library sees it: who is signed in, and what to do when the service wants a new
// session or a captcha.
#pragma once

#include "../ExampleHost.hpp"

#include <qqmlregistration.h>

#include <mutex>
#include <QObject>
#include <QString>

class QJSEngine;
class QQmlEngine;

namespace KeloViewer {

class Host : public QObject, public ExampleHost {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    /// "signIn", "captcha" or empty: which sheet lies over the feed.
    Q_PROPERTY(QString sheet MEMBER _sheet NOTIFY changed)
    Q_PROPERTY(QString captchaUrl MEMBER _captchaUrl NOTIFY changed)
    /// What the service said to the last try to sign in.
    Q_PROPERTY(QString problem MEMBER _problem NOTIFY changed)
    Q_PROPERTY(QString userName MEMBER _userName NOTIFY changed)
    /// The last call did not reach the service.
    Q_PROPERTY(bool offline READ offline NOTIFY changed)

public:
    using Undo = std::function<void()>;
    enum class Heard {
        Well,   ///< The call did what it should.
        Waits,  ///< It waits for a sheet, and its completion is called again if that goes well.
        Failed, ///< Nothing more comes of it.
    };

    /// Made at the first call, and kept by the library.
    static Host& shared();
    /// For QML.
    static Host* create(QQmlEngine*, QJSEngine*);

    /// What every completion asks first. `ifDropped` runs when a call that waits is given up.
    Heard hear(
        const KeloAPI::Error* error, Undo ifDropped = [] {});
    Heard hear(
        const std::optional<KeloAPI::Error>& error, Undo ifDropped = [] {}) {
        return hear(error ? &*error : nullptr, std::move(ifDropped));
    }
    bool offline() const { return _offline; }
    /// Whether calls would go through now.
    bool isReady() const { return !_offline && _sheet.isEmpty(); }

    Q_INVOKABLE void signIn(const QString& user, const QString& password);
    /// Closes the sheet. The calls that waited for it are sent again, or dropped.
    Q_INVOKABLE void closeSheet(bool sendAgain);
    /// After a failure of the network: reads again what was missed.
    Q_INVOKABLE void retry();

    std::optional<std::string> sessionKeyForSession(KeloAPI::Session& session) override;
    void reauthRequiredForSession(KeloAPI::Session& session) override;
    bool shouldHandleCaptchaForSession(KeloAPI::Session& session,
                                       const KeloAPI::URL& captchaUrl) override;

Q_SIGNALS:
    void changed();
    void retryWanted();
    void said(const QString& text); ///< A line for the user.

private:
    Host();
    void readUser();
    void setOffline(bool offline);

    QString _sheet, _captchaUrl, _problem, _userName;
    bool _offline = false;
    std::vector<Undo> _undos;
    std::mutex _keyMutex; // a file queue asks on its own thread
    std::string _key;
};

} // namespace KeloViewer
