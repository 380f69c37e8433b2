// expect: private
#include <KeloAPI/files/FileQueue.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
FileQueue queue("videos");
#else
auto queue = FileQueue::withKey("videos");
#endif
