// expect: deleted
#include <KeloAPI/loops/KLVideoUpload.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
KLVideoUpload object;
#else
KLVideoUpload object("1");
#endif
