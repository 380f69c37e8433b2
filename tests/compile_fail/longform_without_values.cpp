// expect: deleted
#include <KeloAPI/loops/KLLongform.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
KLLongform object;
#else
KLLongform object("1", URL::empty(), 1);
#endif
