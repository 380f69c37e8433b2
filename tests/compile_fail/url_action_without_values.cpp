// expect: deleted
#include <KeloAPI/model/KLUrlAction.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
const KLUrlAction made;
#else
const KLUrlAction made("r1", "Title", "Open", URL::empty(), true, {}, {}, {}, {}, {});
#endif
