#include <KeloAPI/api/DownloadsAtOnce.hpp>

#include <utility>

namespace KeloAPI {

namespace {

thread_local DownloadDelivery current = DownloadDelivery::MainQueue;

} // namespace

DownloadsAtOnce::DownloadsAtOnce()
    : _before(std::exchange(current, DownloadDelivery::AtOnce)) {}

DownloadsAtOnce::~DownloadsAtOnce() {
    current = _before;
}

DownloadDelivery DownloadsAtOnce::delivery() {
    return current;
}

} // namespace KeloAPI
