// expect: deleted
#include <KeloAPI/model/KLUserMosaic.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
const KLUserMosaic made;
#else
KLUserMosaic make(std::shared_ptr<KLPagedData> users) {
    return {std::move(users), "Title", "Subtitle", "kelo://x", "r1", true};
}
#endif
