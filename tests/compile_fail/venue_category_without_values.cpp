// expect: deleted
#include <KeloAPI/model/KLVenueCategory.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
const KLVenueCategory made;
#else
const KLVenueCategory made("c1", "Coffee");
#endif
