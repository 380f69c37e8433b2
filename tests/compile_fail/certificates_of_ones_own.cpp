// expect: deleted
#include <KeloAPI/api/Certificates.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
const Certificates certificates;
#else
const auto chain = Certificates::chain();
#endif
