#pragma once

#import <Foundation/Foundation.h>

namespace KeloBridge {

/// Gives the instances of `made`, not those of classes derived from it, a class of this name at the
/// runtime, archives included. The compiler takes no name with a module in it, the runtime does.
/// Called in `+load`.
void nameAtRuntime(Class made, const char *name);

/// The class that instances of `made` have: the one of its runtime name, or itself.
Class instanceClass(Class made);

} // namespace KeloBridge
