#include <KeloAPI/model/KLRekelo.hpp>

#include <KeloAPI/model/KLWatchUser.hpp>

namespace KeloAPI {

KLRekelo::~KLRekelo() = default;

} // namespace KeloAPI
