// expect: deleted
#include <KeloAPI/api/Session.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
Session session;
#else
Session session(SessionType::Authenticated);
#endif
