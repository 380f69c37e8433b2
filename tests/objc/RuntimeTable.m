// In plain Objective-C, which has fast enumeration.
#define _GNU_SOURCE
#import <Foundation/Foundation.h>

#include <dlfcn.h>
#include <objc/runtime.h>
#include <stdlib.h>

NSString *KeloRuntimeTable(Class anyOfLibrary);

static const void *imageOf(const void *address) {
    Dl_info info;
    return dladdr(address, &info) != 0 ? info.dli_fbase : NULL;
}

static NSArray *sortedLines(NSArray *lines) {
    return [lines sortedArrayUsingSelector:@selector(compare:)];
}

static NSArray *methodLines(Class one, NSString *mark) {
    NSMutableArray *lines = [NSMutableArray array];
    unsigned count = 0;
    Method *methods = class_copyMethodList(one, &count);
    for (unsigned i = 0; i < count; ++i) {
        const char *name = sel_getName(method_getName(methods[i]));
        if (name[0] != '.') { // the compiler's own
            [lines addObject:[NSString stringWithFormat:@"    %@ %s", mark, name]];
        }
    }
    free(methods);
    return sortedLines(lines);
}

static NSArray *requiredLines(Protocol *one) {
    NSMutableArray *lines = [NSMutableArray array];
    unsigned count = 0;
    struct objc_method_description *methods =
        protocol_copyMethodDescriptionList(one, YES, YES, &count);
    for (unsigned i = 0; i < count; ++i) {
        [lines addObject:[NSString stringWithFormat:@"    - %s", sel_getName(methods[i].name)]];
    }
    free(methods);
    return sortedLines(lines);
}

static NSString *classEntry(Class one) {
    NSMutableArray *lines = [NSMutableArray array];
    [lines addObject:[NSString stringWithFormat:@"%s : %s", class_getName(one),
                                                class_getName(class_getSuperclass(one))]];
    unsigned count = 0;
    Protocol **protocols = class_copyProtocolList(one, &count);
    for (unsigned i = 0; i < count; ++i) {
        [lines addObject:[NSString stringWithFormat:@"    <%s>", protocol_getName(protocols[i])]];
    }
    free(protocols);
    [lines addObjectsFromArray:methodLines(object_getClass((id)one), @"+")];
    [lines addObjectsFromArray:methodLines(one, @"-")];
    return [lines componentsJoinedByString:@"\n"];
}

static NSString *protocolEntry(Protocol *one) {
    NSString *head = [NSString stringWithFormat:@"<%s>", protocol_getName(one)];
    return [[[NSArray arrayWithObject:head] arrayByAddingObjectsFromArray:requiredLines(one)]
        componentsJoinedByString:@"\n"];
}

/// All classes of the library of `anyOfLibrary` and its protocols, each with the selectors that it
/// has itself, sorted.
NSString *KeloRuntimeTable(Class anyOfLibrary) {
    const void *library = imageOf((void *)anyOfLibrary);
    NSMutableArray *entries = [NSMutableArray array];
    const int count = objc_getClassList(NULL, 0);
    Class *classes = (Class *)malloc(sizeof(Class) * (size_t)count);
    const int found = objc_getClassList(classes, count);
    for (int i = 0; i < found && i < count; ++i) {
        // A class with two names is found twice.
        if (imageOf((void *)classes[i]) == library &&
            ![entries containsObject:classEntry(classes[i])]) {
            [entries addObject:classEntry(classes[i])];
        }
    }
    free(classes);
    unsigned protocolCount = 0;
    Protocol **protocols = objc_copyProtocolList(&protocolCount);
    for (unsigned i = 0; i < protocolCount; ++i) {
        if (imageOf((void *)protocols[i]) == library) {
            [entries addObject:protocolEntry(protocols[i])];
        }
    }
    free(protocols);
    return [[sortedLines(entries) componentsJoinedByString:@"\n"] stringByAppendingString:@"\n"];
}
