#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <span>
#include <string>
#include <utility>

/// What systems do each in their own way. A port to another one changes the source of this header,
/// which has Linux's way and, beside it, one that needs nothing but POSIX and C++
/// (`KELO_PORTABLE_ONLY` chooses that on Linux, too).
namespace KeloAPI::System {

/// Readable from `set` until `clear`, for loops that watch descriptors. Never closed.
class Event {
public:
    /// False when the process has no descriptor left.
    bool open();
    bool isOpen() const { return _readable >= 0; }
    /// What a loop watches; -1 before `open`.
    int descriptor() const { return _readable; }
    /// Once before each `clear`.
    void set() const;
    void clear() const;

private:
    int _readable = -1;
    int _writable = -1;
};

/// Names the current thread for debuggers, as far as the system can: Linux keeps 15 bytes.
void nameThread(const std::string& name);

/// Whether `nameThread` does anything.
bool canNameThreads();

/// A socket that programs started by this process do not get. -1 with `errno` when there is none.
int openSocket(int family, int type, int protocol);

/// Fills up to 256 bytes with values that nobody can foresee. False when the system has none to
/// give; some bytes are then as they were.
bool fillWithRandom(std::span<unsigned char> bytes);

/// Seconds since 1970, and nanoseconds.
std::pair<std::int64_t, std::int64_t> modificationTime(const struct stat& attributes);

} // namespace KeloAPI::System
