// expect: deleted
#include <KeloAPI/model/KLSolicitation.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
const KLSolicitation made;
#else
const KLSolicitation made("r1", true, "close/1");
#endif
