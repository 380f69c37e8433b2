#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPI/model/KLUserMosaic.hpp>

#include <utility>

namespace KeloAPI {

KLUserMosaic::KLUserMosaic(std::shared_ptr<KLPagedData> users, std::string title,
                           std::string description, std::string link, std::string reference,
                           bool closeable)
    : KLFeedInsert(std::move(reference), closeable)
    , _users(std::move(users))
    , _title(std::move(title))
    , _subtitle(std::move(description))
    , _link(std::move(link)) {
    require(_users != nullptr, "a mosaic of users needs a list of users");
}

KLUserMosaic::~KLUserMosaic() = default;

} // namespace KeloAPI
