// expect: deleted
#include <KeloAPI/model/KLPostsMosaic.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
const KLPostsMosaic made;
#else
KLPostsMosaic make(std::shared_ptr<KLPagedData> posts) {
    return {std::move(posts),           "Title", "Subtitle", "kelo://x", "r1", true,
            KLPostsMosaicType::Default, true};
}
#endif
