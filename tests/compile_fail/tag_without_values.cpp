// expect: deleted
#include <KeloAPI/model/KLTag.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
const KLTag made;
#else
const KLTag made("cats");
#endif
