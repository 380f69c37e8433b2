#pragma once

#include <KeloAPI/base/URL.hpp>

namespace KeloAPI {

class Session;

/// What a host tells its sessions about the service, the user and the device, and what it hears of
/// them. A session asks anew for every request and keeps nothing. The first seven members are
/// asked on the thread that sends; the last two are called on the main queue. A session holds its
/// delegate weakly: the host, or `Api::setSessionDelegate`, keeps it.
class KELO_API SessionDelegate {
public:
    SessionDelegate() = default;
    SessionDelegate(const SessionDelegate&) = delete;
    SessionDelegate& operator=(const SessionDelegate&) = delete;
    virtual ~SessionDelegate() = default;

    /// Host of the service, with a port where it is not the scheme's own; absent for the built-in.
    virtual std::optional<std::string> hostForSession(Session& session) = 0;
    /// Scheme with "://"; absent for "https://".
    virtual std::optional<std::string> schemaForSession(Session& session) = 0;
    /// Session key of the signed-in user; absent when nobody is signed in.
    virtual std::optional<std::string> sessionKeyForSession(Session& session) = 0;
    /// Value of "Accept-Language"; absent to send none.
    virtual std::optional<std::string> acceptLanguageForSession(Session& session) = 0;
    /// Value of "User-Agent"; absent to send none.
    virtual std::optional<std::string> userAgentForSession(Session& session) = 0;
    /// Value of "X-Kelo-Client", the client's identification; absent to send none.
    virtual std::optional<std::string> keloClientForSession(Session& session) = 0;
    /// Whether the request is a background poll rather than something the user did.
    virtual bool isPollingForSession(Session& session) = 0;

    /// The user must sign in again. Once that is settled, call
    /// `session.handleQueuedRetries`.
    virtual void reauthRequiredForSession(Session& session) = 0;
    /// The service demands that a captcha be solved at `captchaUrl`. True promises to present it
    /// and to call `session.handleQueuedRetries` afterwards.
    virtual bool shouldHandleCaptchaForSession(Session& session, const URL& captchaUrl) = 0;
};

} // namespace KeloAPI
