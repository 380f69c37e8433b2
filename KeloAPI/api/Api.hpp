#pragma once

#include <KeloAPI/api/Session.hpp>
#include <KeloAPI/api/SessionDelegate.hpp>

namespace KeloAPI {

/// The process's registry of sessions: at most one of each type, living until the process ends. Its
/// members belong to the main queue's thread.
class KELO_API Api {
public:
    Api(const Api&) = delete;
    Api& operator=(const Api&) = delete;
    ~Api() = delete;

    /// The session of this type, made at the first call, with `sessionDelegate()` as its delegate.
    static std::shared_ptr<Session> session(SessionType type);
    /// The same with `delegate` as its delegate; null leaves it without one.
    static std::shared_ptr<Session> session(SessionType type,
                                            const std::shared_ptr<SessionDelegate>& delegate);

    /// The delegate of sessions that are asked for without one; null by default.
    static std::shared_ptr<SessionDelegate> sessionDelegate();
    /// Held strongly. Sessions that exist already keep the delegate they have.
    static void setSessionDelegate(std::shared_ptr<SessionDelegate> delegate);

private:
    template <class T>
    friend class NeverDestroyed;
    Api() = default;
    static Api& instance();

    std::map<SessionType, std::shared_ptr<Session>> _sessions;
    std::shared_ptr<SessionDelegate> _sessionDelegate;
};

} // namespace KeloAPI
