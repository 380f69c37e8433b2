#pragma once

namespace KeloAPI {

/// Initialises libcurl and the crypto library below it, and lets the library's threads park before
/// those clean up at exit. Once; further calls do nothing.
void initialiseNetworkLibraries();

} // namespace KeloAPI
