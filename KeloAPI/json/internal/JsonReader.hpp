#pragma once

namespace KeloAPI {

/// Makes the reader choose its implementation for this processor, whose objects register exit
/// handlers, and parks the library's threads before those run. Who starts threads that read does
/// this first: an exit could run the one handler before a thread has registered the other.
void initialiseJsonReader();

} // namespace KeloAPI
