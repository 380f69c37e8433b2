// expect: deleted
#include <KeloAPI/model/KLWatchPost.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
void copy(const KLWatchPost& post) {
    KLWatchPost copied = post;
}
#else
std::shared_ptr<KLWatchPost> copy(std::shared_ptr<KLWatchPost> post) {
    return post;
}
#endif
