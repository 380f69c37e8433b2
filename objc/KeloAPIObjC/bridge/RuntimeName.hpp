#pragma once

#import <Foundation/Foundation.h>

namespace KeloBridge {

/// Gives the class this name at the runtime, archives included; by the name that the compiler gave
/// it, it is found as before. The compiler takes no name with a module in it, the runtime does.
/// Called in `+load`.
void nameAtRuntime(Class made, const char *name);

} // namespace KeloBridge
