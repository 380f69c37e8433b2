#include <KeloAPI/api/Certificates.hpp>
#include <KeloAPI/api/Session.hpp>
#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/http/ServerTrustPolicy.hpp>
#include <KeloAPI/Settings.hpp>

#include <map>
#include <utility>

namespace KeloAPI {

namespace {

using Question = std::optional<std::string> (SessionDelegate::*)(Session& session);

/// What the session's delegate says, where there is one.
std::optional<std::string> ask(Session& session, Question question) {
    const auto delegate = session.delegate();
    return delegate ? (delegate.get()->*question)(session) : std::nullopt;
}

} // namespace

Session::Session(SessionType sessionType)
    : _sessionType(sessionType) {}

std::shared_ptr<SessionDelegate> Session::delegate() const {
    const std::lock_guard lock(_delegateMutex);
    return _delegate.lock();
}

void Session::setDelegate(const std::shared_ptr<SessionDelegate>& delegate) {
    const std::lock_guard lock(_delegateMutex);
    _delegate = delegate;
}

std::string Session::host() {
    return ask(*this, &SessionDelegate::hostForSession).value_or(std::string(Settings::apiHost));
}

std::string Session::schema() {
    return ask(*this, &SessionDelegate::schemaForSession).value_or("https://");
}

std::optional<std::string> Session::sessionId() {
    return ask(*this, &SessionDelegate::sessionKeyForSession);
}

std::optional<std::string> Session::acceptLanguage() {
    return ask(*this, &SessionDelegate::acceptLanguageForSession);
}

std::optional<std::string> Session::userAgent() {
    return ask(*this, &SessionDelegate::userAgentForSession);
}

std::optional<std::string> Session::keloClient() {
    return ask(*this, &SessionDelegate::keloClientForSession);
}

bool Session::polling() {
    const auto asked = delegate();
    return asked && asked->isPollingForSession(*this);
}

std::shared_ptr<Manager> Session::sessionManager() {
    {
        const std::lock_guard lock(_managerMutex);
        if (_sessionManager) {
            return _sessionManager;
        }
    }
    // The delegate is asked outside the lock: it may use this session. What is pinned is where the
    // requests go; without such a place nothing is sent at all.
    const auto base = URL::parse(schema() + host());
    std::map<std::string, ServerTrustPolicy> policies;
    policies.emplace(base ? base->host() : std::string(), PinCertificates{Certificates::chain()});
    auto manager = std::make_shared<Manager>(ServerTrustPolicyManager(policies));
    const std::lock_guard lock(_managerMutex);
    if (!_sessionManager) {
        _sessionManager = std::move(manager);
    }
    return _sessionManager;
}

void Session::setSessionManager(std::shared_ptr<Manager> manager) {
    require(manager != nullptr, "a session needs a manager");
    const std::lock_guard lock(_managerMutex);
    _sessionManager.swap(manager); // the old one goes without the lock, as its calls end then
}

std::shared_ptr<Request> Session::request(const URLRequestConvertible& convertible) {
    return sessionManager()->request(convertible);
}

std::shared_ptr<Request> Session::upload(const URLRequestConvertible& convertible, Data data) {
    return sessionManager()->upload(convertible, std::move(data));
}

void Session::download(const URLRequestConvertible& convertible, const URL& destinationUrl,
                       DownloadCompletion completionHandler, DownloadProgress progressHandler,
                       DownloadDelivery delivery) {
    require(completionHandler != nullptr, "a call needs a completion");
    const auto request = sessionManager()->download(convertible, destinationUrl);
    if (progressHandler) {
        request->progress(std::move(progressHandler));
    }
    request->response([destinationUrl, completionHandler = std::move(completionHandler),
                       delivery](const ResponseContent& content, Timeline) -> Request::Completion {
        if (delivery == DownloadDelivery::AtOnce) {
            completionHandler(destinationUrl, content.error);
            return nullptr;
        }
        return [destinationUrl, completionHandler, error = content.error] {
            completionHandler(destinationUrl, error);
        };
    });
}

void Session::handleQueuedRetries(bool shouldRetry) {
    // Taken out first: a retry may queue another one, or release the queue itself, and each runs
    // once all the same.
    const std::vector<EndpointRetry> retries = std::exchange(_queuedRetries, {});
    if (shouldRetry) {
        for (const EndpointRetry& retry : retries) {
            retry();
        }
    }
    _queuedRetries.clear();
}

void Session::endpointRequiresAuth(const std::shared_ptr<Endpoint>&, EndpointRetry retry) {
    if (retry) {
        _queuedRetries.push_back(std::move(retry));
    }
    if (const auto told = delegate()) {
        told->reauthRequiredForSession(*this);
    }
}

void Session::endpointRequiresCaptcha(const std::shared_ptr<Endpoint>&, const URL& captchaUrl,
                                      EndpointRetry retry) {
    const auto asked = delegate();
    if (asked && asked->shouldHandleCaptchaForSession(*this, captchaUrl) && retry) {
        _queuedRetries.push_back(std::move(retry));
    }
}

} // namespace KeloAPI
