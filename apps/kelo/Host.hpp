#pragma once

#include "CommandLine.hpp"
#include "Failure.hpp"
#include "KeptSession.hpp"
#include "Loop.hpp"
#include "Output.hpp"
#include "Trace.hpp"

#include <KeloAPI/KeloAPI.hpp>

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace KeloHost {

/// The program as the library sees it: tells its sessions where the service is and who the user is,
/// hears when the user has to do something, runs the main loop and knows how the program ends.
class Host final : public KeloAPI::SessionDelegate {
public:
    /// Becomes the default delegate of the library's sessions.
    static std::shared_ptr<Host> create(const Options& options);

    const Options& options() const { return _options; }
    const Output& output() const { return _output; }
    /// Which certificates the service may have, and where they come from, in words.
    const std::string& expectedPins() const { return _expectedPins; }
    Loop& loop() { return _loop; }

    /// Calls `work` (signs the user in first, where the options name one and there is no session)
    /// and runs the library's main queue until `end`. Throws the `Failure` that ended the program,
    /// or that of the trace.
    void run(const std::function<void()>& work);

    /// True when a call that failed with `error` is going to be sent again, because the user is
    /// being asked to sign in or to solve a captcha. The library calls a completion at once with
    /// the failure and once more with what the retry brings; a command does nothing the first time.
    /// If the user gives up, the program ends without that second call.
    bool hearsAgain(const KeloAPI::Error& error);

    /// Takes what a call reported: ends the program with it, unless the call is heard again.
    void fail(const KeloAPI::Error& error);
    /// Calls `use` when a call brought no error, else `fail`. A `Failure` that `use` throws ends
    /// the program.
    void hear(const KeloAPI::Error* error, const std::function<void()>& use);
    void hear(const std::optional<KeloAPI::Error>& error, const std::function<void()>& use) {
        hear(error ? &*error : nullptr, use);
    }

    /// Ends the program, successfully or with a failure; during `doAll`, the current task.
    void end();
    void end(const Failure& failure, bool othersFailAlike = false);
    struct Task {
        /// Failures are reported with it.
        std::string name;
        std::function<void()> work;
    };
    /// Does one task after another and ends the program. A failure is reported at once, and the
    /// next task begins, unless that would fail for the same reason: a connection or session that
    /// does not work.
    void doAll(std::deque<Task> tasks);
    /// Prints one thing and ends the program.
    void show(const KeloAPI::Parameters& fields, const Lines& lines);
    /// Prints what was done ("liked post"), to what identifier, and the identifier that the service
    /// gave the deed, where it gave one, and ends the program.
    void showDone(const std::string& deed, const std::string& id,
                  const std::optional<std::string>& deedId = std::nullopt);

    /// Signs the user in, unless that was done for this run already, keeps the session for later
    /// runs and ends the program.
    void keepSignedIn();

    /// The session has worked: when it is refused later, the attempts to sign in are counted anew.
    void sessionWorks() { _attempts = 0; }
    /// Sets what counts the calls under way. Those that began before the user signed in carry the
    /// old session key, and a refusal of them says nothing about the new one.
    void setCallsUnderWay(std::function<std::int64_t()> callsUnderWay) {
        _callsUnderWay = std::move(callsUnderWay);
    }

    using Text = std::optional<std::string>;
    Text hostForSession(KeloAPI::Session&) override { return _options.host; }
    Text schemaForSession(KeloAPI::Session&) override { return "https://"; }
    Text sessionKeyForSession(KeloAPI::Session& session) override;
    Text acceptLanguageForSession(KeloAPI::Session& session) override;
    Text userAgentForSession(KeloAPI::Session&) override { return "kelo/" KELO_VERSION; }
    Text keloClientForSession(KeloAPI::Session&) override { return "command-line/" KELO_VERSION; }
    bool isPollingForSession(KeloAPI::Session&) override { return false; }
    void reauthRequiredForSession(KeloAPI::Session& session) override;
    bool shouldHandleCaptchaForSession(KeloAPI::Session& session,
                                       const KeloAPI::URL& captchaUrl) override;

private:
    struct Credentials {
        std::string user;
        std::string password;
    };
    using Sessions = std::vector<std::shared_ptr<KeptSession>>;

    explicit Host(Options options)
        : _options(std::move(options))
        , _output(_options.json) {}

    std::int64_t callsUnderWay() const { return _callsUnderWay ? _callsUnderWay() : 0; }
    bool canAsk() const;
    /// Signs the user in, then calls `next`.
    void signIn(std::function<void()> next);
    /// Lets the calls that were refused be sent again with the session that is new already.
    void releaseSoon();
    void tryToSignIn();
    void giveUp();
    /// What would help who could not sign in; empty where nothing is missing.
    std::string signInHint() const;
    /// What to sign in with next; absent when there is nothing left to try.
    std::optional<Credentials> credentials();
    void signedIn(const Sessions& sessions, const std::optional<KeloAPI::Error>& error);
    void signInFailed(const KeloAPI::Error& error);
    void askForCaptcha(KeloAPI::SessionType type, const KeloAPI::URL& captchaUrl);

    Options _options;
    const Output _output;
    std::string _expectedPins;
    Loop _loop;
    /// Absent unless the options ask for one.
    std::shared_ptr<Trace> _trace;
    std::optional<Failure> _failure;
    std::deque<Task> _tasks;
    /// Of the one at work; empty outside `doAll`.
    std::string _taskName;
    std::function<std::int64_t()> _callsUnderWay;
    bool _waitsForSignIn = false;
    bool _waitsForRelease = false;
    /// Calls under way that still carry the session key from before the user signed in.
    std::int64_t _stragglers = 0;
    bool _waitsForCaptcha = false;
    int _attempts = 0;
    /// Whether to sign in is what the user has asked for.
    bool _isLogin = false;
    /// What the service said when it refused the session.
    std::string _reason;
    std::function<void()> _afterSignIn;
    /// Absent until the user has signed in.
    std::optional<KeptSession> _newSession;
};

} // namespace KeloHost
