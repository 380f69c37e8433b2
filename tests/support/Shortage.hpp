#pragma once

#include <sys/resource.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <fstream>

namespace KeloAPI::testing {

/// Lowers a limit of this process for the life of the object. Belongs into a process of its own.
class LoweredLimit {
public:
    LoweredLimit(__rlimit_resource_t resource, rlim_t limit)
        : _resource(resource) {
        getrlimit(resource, &_before);
        const rlimit lowered = {limit, _before.rlim_max};
        setrlimit(resource, &lowered);
    }
    LoweredLimit(const LoweredLimit&) = delete;
    LoweredLimit& operator=(const LoweredLimit&) = delete;
    ~LoweredLimit() { setrlimit(_resource, &_before); }

private:
    __rlimit_resource_t _resource;
    rlimit _before{};
};

/// Leaves so much more address space. It binds the superuser, too, which a limit of the number of
/// threads does not.
class LittleRoom : LoweredLimit {
public:
    explicit LittleRoom(std::size_t bytes)
        : LoweredLimit(RLIMIT_AS, taken() + bytes) {}

private:
    static rlim_t taken() {
        std::uint64_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    }
};

/// A thread's stack takes more than is left.
class NoRoomForAThread : LittleRoom {
public:
    NoRoomForAThread()
        : LittleRoom(std::size_t{1} << 20U) {}
};

/// Lets so many further descriptors be opened: all others that are lower than the limit are open.
class FewDescriptorsLeft : LoweredLimit {
public:
    explicit FewDescriptorsLeft(int left)
        : LoweredLimit(RLIMIT_NOFILE, free(left)) {}

private:
    /// The lowest number that stays free when `left` more descriptors are open.
    static rlim_t free(int left) {
        const int lowest = dup(STDERR_FILENO);
        const rlim_t found = left == 0 ? static_cast<rlim_t>(lowest) : free(left - 1);
        close(lowest);
        return found;
    }
};

class NoDescriptors : FewDescriptorsLeft {
public:
    NoDescriptors()
        : FewDescriptorsLeft(0) {}
};

} // namespace KeloAPI::testing
