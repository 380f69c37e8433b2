// expect: deleted
#include <KeloAPI/loops/LoopData.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
const LoopData made;
#else
const LoopData made(Number::of(1), Number::of(0.5));
#endif
