// expect: private|deleted
#include <KeloAPI/api/Api.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
const Api api;
#else
const auto api = Api::sessionDelegate();
#endif
