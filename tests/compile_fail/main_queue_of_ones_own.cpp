// expect: private|deleted
#include <KeloAPI/platform/MainQueue.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
MainQueue queue;
#else
MainQueue& queue = MainQueue::main();
#endif
