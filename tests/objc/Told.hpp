#pragma once

#import <Foundation/Foundation.h>

#include <string>

namespace KeloObjcTest {

/// A value as tables of tests write it: nil, "text", <address>, 12.5s for an instant since
/// 1970, 2.5 for a number and for yes or no, {3, 4} for a range, [...] for a list, and an object by
/// its class.
std::string told(id value);

/// The properties of an object with these names, in order, with blanks between.
std::string told(id object, const char *names);

/// Whether the date is of now, or of the last ten seconds.
bool isNow(NSDate *date);

} // namespace KeloObjcTest
