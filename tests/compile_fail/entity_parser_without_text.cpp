// expect: deleted
#include <KeloAPI/model/KLEntity.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
const KLEntityParser made;
#else
const KLEntityParser made("by Mara");
#endif
