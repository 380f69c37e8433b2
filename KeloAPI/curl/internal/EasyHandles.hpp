#pragma once

#include <curl/curl.h>

#include <vector>

namespace KeloAPI {

/// Easy handles that wait for their next transfer: to make and free one takes longer than to set
/// one up. Only for one thread.
class EasyHandles {
public:
    EasyHandles() = default;
    EasyHandles(const EasyHandles&) = delete;
    EasyHandles& operator=(const EasyHandles&) = delete;
    ~EasyHandles();

    /// Without options; null where there is no memory.
    CURL* take();
    /// Takes back what `take` gave, or null.
    void giveBack(CURL* easy) noexcept;

private:
    std::vector<CURL*> _idle;
};

} // namespace KeloAPI
