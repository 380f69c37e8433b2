// expect: deleted
#include <KeloAPI/files/KLVideoUrlBitrateSetting.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
KLVideoUrlBitrateSetting setting;
#else
KLVideoUrlBitrateSetting setting(URL::empty(), "h264", "1", 0, "2");
#endif
