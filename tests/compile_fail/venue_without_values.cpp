// expect: deleted
#include <KeloAPI/model/KLVenue.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
const KLVenue made;
#else
const KLVenue made("v1", "Cafe");
#endif
