#import <Foundation/Foundation.h>

// Every method that takes a block has another one beside it that takes a target and an action; a
// compiler without blocks sees only that one.
#ifndef __has_feature
#define __has_feature(feature) 0
#endif
