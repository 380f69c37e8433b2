#include <KeloAPI/base/internal/System.hpp>

#include <unistd.h>

#if defined(__linux__) && !defined(KELO_PORTABLE_ONLY)
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#else
#include <fcntl.h>
#include <sys/socket.h>

#include <array>
#include <exception>
#include <random>
#endif

namespace KeloAPI::System {

#if defined(__linux__) && !defined(KELO_PORTABLE_ONLY)

bool Event::open() {
    _readable = _writable = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    return isOpen();
}

void nameThread(const std::string& name) {
    pthread_setname_np(pthread_self(), name.substr(0, 15).c_str());
}

bool canNameThreads() {
    return true;
}

int openSocket(int family, int type, int protocol) {
    return socket(family, type | SOCK_CLOEXEC, protocol);
}

bool fillWithRandom(std::span<unsigned char> bytes) {
    return getentropy(bytes.data(), bytes.size()) == 0;
}

#else

namespace {

/// A program that another thread starts just before this gets the descriptor all the same.
void keepFromPrograms(int descriptor) {
    fcntl(descriptor, F_SETFD, FD_CLOEXEC);
}

} // namespace

bool Event::open() {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) {
        return false;
    }
    for (const int end : ends) {
        keepFromPrograms(end);
        fcntl(end, F_SETFL, O_NONBLOCK);
    }
    _readable = ends[0];
    _writable = ends[1];
    return true;
}

void nameThread(const std::string& /*name*/) {}

bool canNameThreads() {
    return false;
}

int openSocket(int family, int type, int protocol) {
    const int made = socket(family, type, protocol);
    if (made >= 0) {
        keepFromPrograms(made);
    }
    return made;
}

bool fillWithRandom(std::span<unsigned char> bytes) {
    try {
        std::random_device source;
        for (unsigned char& byte : bytes) {
            byte = static_cast<unsigned char>(source());
        }
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

#endif

// An event's counter, or that many bytes in a pipe.
void Event::set() const {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(_writable, &one, sizeof one);
}

void Event::clear() const {
    std::uint64_t count = 0;
    [[maybe_unused]] const auto got = read(_readable, &count, sizeof count);
}

std::pair<std::int64_t, std::int64_t> modificationTime(const struct stat& attributes) {
    return {attributes.st_mtim.tv_sec, attributes.st_mtim.tv_nsec};
}

} // namespace KeloAPI::System
