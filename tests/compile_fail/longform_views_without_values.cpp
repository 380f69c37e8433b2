// expect: deleted
#include <KeloAPI/loops/KLLongformViews.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
const KLLongformViews made;
#else
const KLLongformViews made("abc", 1);
#endif
