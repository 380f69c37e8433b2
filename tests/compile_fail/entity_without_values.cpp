// expect: deleted
#include <KeloAPI/model/KLEntity.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
const KLEntity made;
#else
const KLEntity made("7", "user", "Mara", "kelo://user/7", Range{0, 4});
#endif
