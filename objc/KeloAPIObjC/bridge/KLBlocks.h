#import <Foundation/Foundation.h>

#ifndef __has_feature
#define __has_feature(feature) 0
#endif

/// Declares the type of a block without a result. For a compiler without blocks it is an object
/// that must be one all the same; such hosts use the methods with a target and an action.
#if __has_feature(blocks)
#define KELO_BLOCK(name, ...) typedef void (^name)(__VA_ARGS__)
#else
#define KELO_BLOCK(name, ...) typedef id name
#endif
