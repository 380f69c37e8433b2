#pragma once

namespace KeloAPI {

/// Makes the JSON reader choose its implementation for this processor, whose objects register exit
/// handlers. Further calls do nothing.
void initialiseJsonReader();

} // namespace KeloAPI
