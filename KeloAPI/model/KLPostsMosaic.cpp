#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPI/model/KLPostsMosaic.hpp>

#include <utility>

namespace KeloAPI {

KLPostsMosaic::KLPostsMosaic(std::shared_ptr<KLPagedData> posts, std::string title,
                             std::string description, std::string link, std::string reference,
                             bool closeable, KLPostsMosaicType type, bool pinnable)
    : KLFeedInsert(std::move(reference), closeable)
    , _posts(std::move(posts))
    , _title(std::move(title))
    , _subtitle(std::move(description))
    , _link(std::move(link))
    , _type(type)
    , _pinnable(pinnable) {
    require(_posts != nullptr, "a mosaic of posts needs a list of posts");
}

KLPostsMosaic::~KLPostsMosaic() = default;

} // namespace KeloAPI
