#include <KeloAPI/model/KLFeedInsert.hpp>

#include <utility>

namespace KeloAPI {

KLFeedInsert::KLFeedInsert(std::string reference, bool closeable)
    : _reference(std::move(reference))
    , _closeable(closeable) {}

KLFeedInsert::~KLFeedInsert() = default;

} // namespace KeloAPI
