#pragma once

#include <functional>

/// Lets the process exit at any moment while network threads run. TLS and certificates must not be
/// touched once the crypto library has cleaned up after itself, which it does in an exit handler of
/// its own. The guard's handler is registered behind that one and so runs before it: it asks every
/// network thread to park, and waits until they have.
namespace KeloAPI::ExitGuard {

/// Initialises the libraries below and registers the handler. Once; further calls do nothing.
void install();

/// True from the moment the process began to exit.
bool isExiting();

/// Stops the calling thread for good when the process is exiting. Called by network threads
/// wherever they come back from code that is not theirs.
void parkIfExiting();

/// Makes the calling thread one that the process's exit waits for, for the life of the object.
class Member {
public:
    /// `wake` brings the thread to its next `parkIfExiting()`; it is called on the exiting thread.
    explicit Member(std::function<void()> wake);
    Member(const Member&) = delete;
    Member& operator=(const Member&) = delete;
    ~Member();
};

} // namespace KeloAPI::ExitGuard
