// expect: private
#include <KeloAPI/files/FileManager.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
FileManager manager("/videos/");
#else
auto manager = FileManager::sharedGroupManager("/videos/");
#endif
