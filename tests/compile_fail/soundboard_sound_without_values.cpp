// expect: deleted
#include <KeloAPI/model/SoundboardSound.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
const SoundboardSound made;
#else
const SoundboardSound made("Air horn", "8001", "https://cdn.example/8001.m4a", true);
#endif
