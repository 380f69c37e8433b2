#include "Host.hpp"

#include <QQmlEngine>
#include <QSettings>

using namespace KeloAPI;

namespace {

constexpr auto pollInterval = std::chrono::seconds(5);

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
        made->readUser();
        return made;
    }();
    return *host;
}

Host* Host::create(QQmlEngine*, QJSEngine*) {
    QQmlEngine::setObjectOwnership(&shared(), QQmlEngine::CppOwnership);
    return &shared();
}

// An app for people keeps the key in the system's keychain.
Host::Host()
    : _key(QSettings().value("sessionKey").toString().toStdString()) {
    _poll.setInterval(pollInterval);
    connect(&_poll, &QTimer::timeout, this, [this] {
        _isPolling = true; // the service shall know that nobody asked for it
        readUser();
        _isPolling = false;
    });
}

void Host::hear(const Error* error, const Work& well, const Work& failed) {
    const bool isLost = error != nullptr && isOfNetwork(*error);
    setOffline(_offline || isLost);
    if (error == nullptr) {
        well();
    } else if (isForSheet(*error)) {
        _waiting.push_back(failed);
    } else {
        if (!isLost) {
            Q_EMIT said(QString::fromStdString(error->localizedDescription()));
        }
        failed();
    }
    setOffline(isLost); // who waits for the network hears of it last
}

void Host::noteLostNetwork(const Error& error) {
    setOffline(_offline || isOfNetwork(error));
}

void Host::setOffline(bool offline) {
    if (std::exchange(_offline, offline) == offline) {
        return;
    }
    Q_EMIT changed();
    if (offline) {
        _poll.start();
    } else {
        _poll.stop();
        Q_EMIT retryWanted();
    }
}

std::shared_ptr<Endpoint> Host::endpoint(const QString& path, Method method) {
    auto endpoint = Endpoint::create(Api::session(SessionType::Authenticated));
    endpoint->setPath(path.toStdString());
    endpoint->setMethod(method);
    return endpoint;
}

void Host::readUser() {
    MeEndpoint::create()->get(completion(this, [this](const MeResult& result) {
        _userName = QString::fromStdString(result.success()->user->username.value_or(""));
        Q_EMIT changed();
    }));
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
        {
            const std::lock_guard lock(_keyMutex);
            _key = *keys.front();
        }
        QSettings().setValue("sessionKey", QString::fromStdString(_key));
        closeSheet(true);
        readUser();
    };
    endpoint->request(std::make_shared<KLClosureParser<std::string>>(keyIn),
                      completion(this, heard));
}

void Host::closeSheet(bool sendAgain) {
    _sheet.clear();
    Q_EMIT changed();
    const auto waiting = std::exchange(_waiting, {});
    Api::session(SessionType::Authenticated)->handleQueuedRetries(sendAgain);
    for (const Work& failed : waiting) {
        if (!sendAgain) {
            failed();
        }
    }
    Q_EMIT sheetClosed(sendAgain);
}

std::optional<std::string> Host::sessionKeyForSession(Session& session) {
    if (session.sessionType() == SessionType::UnAuthenticated) {
        return std::nullopt;
    }
    const std::lock_guard lock(_keyMutex);
    return _key.empty() ? ExampleHost::sessionKeyForSession(session) : _key;
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
