#pragma once

#include <functional>

/// Lets the process exit at any moment while the library's threads run. TLS and certificates must
/// not be touched once the crypto library has cleaned up after itself, nor JSON read once the
/// reader's objects are destroyed, which both happens in exit handlers of their own. Handlers run
/// in reverse, so the guard's is registered behind each of those: it asks every thread of the
/// library to park, and waits until they have. No thread of the library uses what has been torn
/// down, and the exit does not wait for ever (tests/interleavings).
namespace KeloAPI::ExitGuard {

/// Registers the handler. Once; further calls do nothing.
void install();

/// Registers the handler again. For whoever has initialised a library that has exit handlers; once
/// for each.
void installBehindLibrary();

/// True from the moment the process began to exit.
bool isExiting();

/// Stops the calling thread for good when the process is exiting and the thread is a `Member`, but
/// not the one that exits. Called wherever the library's threads come back from code that is not
/// theirs, and before they enter code that an exit takes the ground from.
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
