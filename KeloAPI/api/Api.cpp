#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/base/internal/NeverDestroyed.hpp>

#include <utility>

namespace KeloAPI {

Api& Api::instance() {
    static NeverDestroyed<Api> api;
    return *api;
}

std::shared_ptr<Session> Api::session(SessionType type) {
    return session(type, sessionDelegate());
}

std::shared_ptr<Session> Api::session(SessionType type,
                                      const std::shared_ptr<SessionDelegate>& delegate) {
    auto& sessions = instance()._sessions;
    const auto found = sessions.find(type);
    if (found != sessions.end()) {
        found->second->setDelegate(delegate);
        return found->second;
    }
    auto session = std::make_shared<Session>(type);
    session->setDelegate(delegate);
    sessions.emplace(type, session);
    return session;
}

std::shared_ptr<SessionDelegate> Api::sessionDelegate() {
    return instance()._sessionDelegate;
}

void Api::setSessionDelegate(std::shared_ptr<SessionDelegate> delegate) {
    instance()._sessionDelegate = std::move(delegate);
}

} // namespace KeloAPI
