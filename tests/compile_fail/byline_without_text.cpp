// expect: deleted
#include <KeloAPI/model/KLByline.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
const KLByline made;
#else
const KLByline made("by Mara");
#endif
