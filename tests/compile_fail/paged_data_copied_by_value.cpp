// expect: deleted
#include <KeloAPI/parsing/KLPagedData.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
void copy(const KLPagedData& list) {
    KLPagedData copied = list;
}
#else
auto copy(const KLPagedData& list) {
    return list.copy();
}
#endif
