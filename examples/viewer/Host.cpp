#include "Host.hpp"

#include <QQmlEngine>
#include <QSettings>

using namespace KeloAPI;

namespace {

bool isOfNetwork(const Error& error) {
    return error.domain() == HTTPErrorDomain && !isHTTPError(error, HTTPErrorCode::Cancelled) &&
           !isHTTPError(error, HTTPErrorCode::HTTPStatus);
}

/// Whether the error is one after which a sheet is shown.
bool isForSheet(const Error& error) {
    const std::int64_t code = error.integer(KLAPIStatusCodeKey).value_or(0);
    return code == 100 || code == 103 || (code == 419 && error.url(KLCaptchaUrlKey));
}

} // namespace

Host& Host::shared() {
    static const auto host = [] {
        std::shared_ptr<Host> made(new Host);
        use(made);
        // A person waits, and should soon hear that the network is down.
        useManager({.connectTimeout = std::chrono::seconds(5),
                    .silenceTimeout = std::chrono::seconds(15)});
        Diagnostics::setSink([](std::string_view) {});
        made->retry();
        return made;
    }();
    return *host;
}

Host* Host::create(QQmlEngine*, QJSEngine*) {
    QQmlEngine::setObjectOwnership(&shared(), QQmlEngine::CppOwnership);
    return &shared();
}

// An app for people keeps the key in the system's keychain.
Host::Host() {
    const QString key = QSettings().value("sessionKey").toString();
    _key = key.isEmpty() ? nullptr : std::make_shared<std::string>(key.toStdString());
}

bool Host::wentWell(const Error* error, const QObject* context, const Work& failed) {
    setOffline(error != nullptr && isOfNetwork(*error));
    if (error != nullptr && isForSheet(*error)) {
        const auto closed = [failed](bool sendAgain) {
            if (!sendAgain) {
                failed();
            }
        };
        connect(this, &Host::sheetClosed, context, closed, Qt::SingleShotConnection);
    } else if (error != nullptr) {
        if (!_offline) {
            Q_EMIT said(QString::fromStdString(error->localizedDescription()));
        }
        failed();
    }
    return error == nullptr;
}

void Host::noteLostNetwork(const Error& error) {
    setOffline(_offline || isOfNetwork(error));
}

void Host::setOffline(bool offline) {
    if (std::exchange(_offline, offline) != offline) {
        Q_EMIT changed();
        if (!offline) { // the call that went through comes first
            QMetaObject::invokeMethod(this, &Host::retryWanted, Qt::QueuedConnection);
        }
    }
}

std::shared_ptr<Endpoint> Host::endpoint(const QString& path, Method method) {
    auto endpoint = Endpoint::create(Api::session(SessionType::Authenticated));
    endpoint->setPath(path.toStdString());
    endpoint->setMethod(method);
    return endpoint;
}

void Host::retry(bool isPoll) {
    _isPolling = isPoll;
    MeEndpoint::create()->get(completion(this, [](const MeResult&) {}));
    _isPolling = false;
}

void Host::signIn(const QString& user, const QString& password) {
    const auto endpoint = Endpoint::create(Api::session(SessionType::UnAuthenticated));
    endpoint->setPath("sessions");
    endpoint->setMethod(Method::POST);
    endpoint->setParameterEncoding(ParameterEncoding::JSON);
    endpoint->setParameters(
        {{"username", user.toStdString()}, {"password", password.toStdString()}});
    const auto keyIn = [](const JsonObject& json) {
        const auto key = json["key"].text();
        return key ? std::make_shared<std::string>(*key) : nullptr;
    };
    const auto heard = [this](const auto& keys, const auto&...) {
        if (keys.empty()) {
            Q_EMIT said("The service sent no key.");
            return;
        }
        _key = keys.front();
        QSettings().setValue("sessionKey", QString::fromStdString(*keys.front()));
        closeSheet(true);
    };
    endpoint->request(std::make_shared<KLClosureParser<std::string>>(keyIn),
                      completion(this, heard));
}

void Host::closeSheet(bool sendAgain) {
    _sheet.clear();
    Q_EMIT changed();
    Api::session(SessionType::Authenticated)->handleQueuedRetries(sendAgain);
    Q_EMIT sheetClosed(sendAgain);
}

std::optional<std::string> Host::sessionKeyForSession(Session& session) {
    if (session.sessionType() == SessionType::UnAuthenticated) {
        return std::nullopt;
    }
    const auto key = _key.load();
    return key ? *key : ExampleHost::sessionKeyForSession(session);
}

void Host::reauthRequiredForSession(Session&) {
    _sheet = "SignIn";
    Q_EMIT changed();
}

bool Host::shouldHandleCaptchaForSession(Session&, const URL& captchaUrl) {
    _sheet = "Captcha";
    _captchaUrl = QString::fromStdString(captchaUrl.absoluteString());
    Q_EMIT changed();
    return true;
}
