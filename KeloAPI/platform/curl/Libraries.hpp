#pragma once

namespace KeloAPI {

/// Initialises libcurl and the crypto library below it. Once; further calls do nothing.
void initialiseNetworkLibraries();

} // namespace KeloAPI
