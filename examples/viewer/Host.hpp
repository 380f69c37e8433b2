// The app as the library sees it: who is signed in, and what to do when the service wants a new
// session or a captcha.
#pragma once

#include "../ExampleHost.hpp"

#include <qqmlregistration.h>

#include <atomic>
#include <QObject>
#include <QPointer>
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
    /// The last call did not reach the service.
    Q_PROPERTY(bool offline MEMBER _offline NOTIFY changed)

public:
    using Work = std::function<void()>;

    /// Made at the first call, and kept by the library.
    static Host& shared();
    /// For QML.
    static Host* create(QQmlEngine*, QJSEngine*);

    /// The completion of any call: does `well` with what the call brought, or `failed` where
    /// nothing more will come of it; nothing once `context` has gone. A call that waits for a sheet
    /// does neither now: either its completion is called again, or it is given up and has failed.
    template <class Well>
    static auto completion(
        QObject* context, Well well, const Work& failed = [] {}) {
        return [context = QPointer(context), well, failed](const auto&... outcome) {
            const auto& last = std::get<sizeof...(outcome) - 1>(std::tie(outcome...));
            if (context && shared().wentWell(errorOf(last), context, failed)) {
                well(outcome...);
            }
        };
    }
    /// Any path of the service's, for who is signed in.
    static std::shared_ptr<KeloAPI::Endpoint>
    endpoint(const QString& path, KeloAPI::Method method = KeloAPI::Method::GET);
    /// Shows the banner where the error says that the network is down.
    void noteLostNetwork(const KeloAPI::Error& error);
    /// Whether calls would go through now.
    bool isReady() const { return !_offline && _sheet.isEmpty(); }

    Q_INVOKABLE void signIn(const QString& user, const QString& password);
    /// Closes the sheet. The calls that waited for it are sent again, or dropped.
    Q_INVOKABLE void closeSheet(bool sendAgain);
    /// Asks who is signed in, to see whether the service can be reached. A poll is one that
    /// nobody asked for.
    Q_INVOKABLE void retry(bool isPoll = false);

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
    /// False with an error; does `failed` then, or when the sheet for which the call waits is
    /// closed and the call given up.
    bool wentWell(const KeloAPI::Error* error, const QObject* context, const Work& failed);
    void setOffline(bool offline);

    static const KeloAPI::Error* errorOf(const std::optional<KeloAPI::Error>& error) {
        return error ? &*error : nullptr;
    }
    template <class Result>
    static const KeloAPI::Error* errorOf(const Result& result) {
        return result.error();
    }

    QString _sheet, _captchaUrl;
    bool _offline = false;
    std::atomic<bool> _isPolling = false;
    std::atomic<std::shared_ptr<std::string>> _key; // a file queue asks on its own thread
};
