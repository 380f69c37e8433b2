// expect: deleted
#include <KeloAPI/model/KLFeedInsert.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
const KLFeedInsert made;
#else
const KLFeedInsert made("r1", true);
#endif
