#pragma once

#include <KeloAPI/http/Certificate.hpp>

#include <vector>

namespace KeloAPI {

/// The service's certificates as they are built into the library.
class KELO_API Certificates {
public:
    Certificates() = delete;

    /// The certificates to pin, in the order in which they are stored; made anew on every call. An
    /// entry that is damaged is left out; an empty list makes every server of the pinned host be
    /// refused.
    static std::vector<Certificate> chain();
};

} // namespace KeloAPI
