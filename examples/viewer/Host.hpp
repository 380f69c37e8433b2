// The app as the library sees it: who is signed in, and what to do when the service wants a new
// session or a captcha.
#pragma once

#include "../ExampleHost.hpp"

#include <qqmlregistration.h>

#include <atomic>
#include <mutex>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <tuple>

class QJSEngine;
class QQmlEngine;

class Host : public QObject, public ExampleHost {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    /// "SignIn", "Captcha" or empty: which sheet lies over the feed.
    Q_PROPERTY(QString sheet MEMBER _sheet NOTIFY changed)
    Q_PROPERTY(QString captchaUrl MEMBER _captchaUrl NOTIFY changed)
    Q_PROPERTY(QString userName MEMBER _userName NOTIFY changed)
    /// The last call did not reach the service.
    Q_PROPERTY(bool offline READ offline NOTIFY changed)

public:
    using Work = std::function<void()>;

    /// Made at the first call, and kept by the library.
    static Host& shared();
    /// For QML.
    static Host* create(QQmlEngine*, QJSEngine*);

    /// The completion of any call: does `well` with what the call brought, or `failed` where
    /// nothing more will come of it; neither once `context` has gone. A call that waits for a sheet
    /// does neither now: either its completion is called again, or it is given up and has failed.
    template <class Well>
    static auto completion(QObject* context, Well well, const Work& failed = {}) {
        return [context = QPointer(context), well, failed](const auto&... outcome) {
            const auto& last = std::get<sizeof...(outcome) - 1>(std::tie(outcome...));
            shared().hear(
                errorOf(last),
                [&] {
                    if (context) {
                        well(outcome...);
                    }
                },
                [context, failed] {
                    if (context && failed) {
                        failed();
                    }
                });
        };
    }
    /// Any path of the service's, for who is signed in.
    static std::shared_ptr<KeloAPI::Endpoint>
    endpoint(const QString& path, KeloAPI::Method method = KeloAPI::Method::GET);
    /// Shows the banner where the error says that the network is down.
    void noteLostNetwork(const KeloAPI::Error& error);
    bool offline() const { return _offline; }
    /// Whether calls would go through now.
    bool isReady() const { return !_offline && _sheet.isEmpty(); }

    Q_INVOKABLE void signIn(const QString& user, const QString& password);
    /// Closes the sheet. The calls that waited for it are sent again, or dropped.
    Q_INVOKABLE void closeSheet(bool sendAgain);
    /// Asks who is signed in, and so whether the service can be reached.
    Q_INVOKABLE void readUser();

    std::optional<std::string> sessionKeyForSession(KeloAPI::Session& session) override;
    bool isPollingForSession(KeloAPI::Session&) override { return _isPolling; }
    void reauthRequiredForSession(KeloAPI::Session& session) override;
    bool shouldHandleCaptchaForSession(KeloAPI::Session& session,
                                       const KeloAPI::URL& captchaUrl) override;

Q_SIGNALS:
    void changed();
    void sheetClosed(bool sendAgain);
    void retryWanted();             ///< The network is back: what was missed can be read.
    void said(const QString& text); ///< A line for the user.

private:
    Host();
    void hear(const KeloAPI::Error* error, const Work& well, const Work& failed);
    void setOffline(bool offline);

    static const KeloAPI::Error* errorOf(const std::optional<KeloAPI::Error>& error) {
        return error ? &*error : nullptr;
    }
    template <class Result>
    static const KeloAPI::Error* errorOf(const Result& result) {
        return result.error();
    }

    QString _sheet, _captchaUrl, _userName;
    bool _offline = false;
    QTimer _poll; // runs while the network is down
    std::atomic<bool> _isPolling = false;
    std::vector<Work> _waiting; // what to do where calls that wait are given up
    std::mutex _keyMutex;       // a file queue asks on its own thread
    std::string _key;
};
