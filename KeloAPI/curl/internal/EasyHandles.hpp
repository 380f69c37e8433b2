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
    ~EasyHandles() { clear(); }

    /// Without options; null when memory has run out.
    CURL* take();
    /// Takes back what `take` gave. `mayServeAgain` is false where its request had a Host field:
    /// libcurl would file the cookies of the next one under that name.
    void giveBack(CURL* easy, bool mayServeAgain) noexcept;
    /// Frees those that wait.
    void clear() noexcept;

private:
    std::vector<CURL*> _idle;
};

} // namespace KeloAPI
