// Reads and writes keyed archives with a real Foundation, of objects of any class: what the tests
// compare ours with.
//
//   foundation-archive write FILE < OBJECTS          archives the first object and all it refers to
//   foundation-archive read FILE < CLASSES           prints the archived objects
//
// OBJECTS, and what is printed:            CLASSES:
//
//   object 1 KLVenue                         class KLVenue
//   text name =Caf%C3%A9                     text name
//   double latitude 52.5                     double latitude
//   object category 2                        object category
//   object 2 KLVenueCategory                 class KLVenueCategory
//   url iconUrl null                         url iconUrl
//
// A line "list 1 2 1" (or "mutable-list") makes the root a list of these objects. A class may name
// its superclass ("KLVenue:KLPlace"). The kinds of entries and their values:
//
//   object       the number of an object
//   int64        -5             double    1.5         bool   0 or 1
//   text         =characters    (mutable-text: written as an NSMutableString)
//   url          =characters    or =relative =base
//   date         seconds since 2001
//   number       b1, i-5 or d1.5
//
// Characters are bytes of UTF-8, those outside letters, digits and "-._~:/" as %XX. In place of the
// value of a kind that is an object there may be "null". What is printed may also be "missing", or
// "other" and the name of the class that was there.
#import <Foundation/Foundation.h>
#import <objc/runtime.h>

#include <ctype.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// An object of a class that the input names. Its entries are lists of kind, key and value.
@interface Model : NSObject <NSCoding> {
@public
    NSMutableArray *entries;
}
@end

// Writing: the objects by their numbers. Reading: the objects in the order they were met.
static NSMutableDictionary *objectsByNumber;
static NSMutableArray *met;
// By the names that archives have for them: the classes, and reading their lists of kind and key.
static NSMutableDictionary *classes;
static NSMutableDictionary *entriesOfClass;

// The words of the line that makes the root a list; nil where there is none.
static NSArray *listLine;

static void fail(NSString *what, NSString *why) {
    fprintf(stderr, "foundation-archive: %s: %s\n", [what UTF8String], [why UTF8String]);
    exit(1);
}

// Writing

static NSString *charactersOf(NSString *value) {
    return [[value substringFromIndex:1]
        stringByReplacingPercentEscapesUsingEncoding:NSUTF8StringEncoding];
}

static id numberOf(NSString *value) {
    const char *digits = [value UTF8String] + 1;
    switch ([value characterAtIndex:0]) {
    case 'b':
        return [NSNumber numberWithBool:*digits == '1'];
    case 'i':
        return [NSNumber numberWithLongLong:strtoll(digits, NULL, 10)];
    default:
        return [NSNumber numberWithDouble:strtod(digits, NULL)];
    }
}

static id urlOf(NSString *value) {
    NSArray *parts = [value componentsSeparatedByString:@" "];
    NSURL *base = nil;
    if ([parts count] == 2) {
        base = [NSURL URLWithString:charactersOf([parts objectAtIndex:1])];
    }
    return [NSURL URLWithString:charactersOf([parts objectAtIndex:0]) relativeToURL:base];
}

static id objectOf(NSString *kind, NSString *value) {
    if ([value isEqual:@"null"]) {
        return nil;
    }
    if ([kind isEqual:@"object"]) {
        return [objectsByNumber objectForKey:value];
    }
    if ([kind isEqual:@"text"]) {
        return charactersOf(value);
    }
    if ([kind isEqual:@"mutable-text"]) {
        return [charactersOf(value) mutableCopy];
    }
    if ([kind isEqual:@"url"]) {
        return urlOf(value);
    }
    if ([kind isEqual:@"number"]) {
        return numberOf(value);
    }
    if ([kind isEqual:@"date"]) {
        return [NSDate dateWithTimeIntervalSinceReferenceDate:strtod([value UTF8String], NULL)];
    }
    fail(@"no kind", kind);
    return nil;
}

// Reading

static unsigned long numberOfObject(id object) {
    if ([met indexOfObjectIdenticalTo:object] == NSNotFound) {
        [met addObject:object];
    }
    return [met indexOfObjectIdenticalTo:object] + 1;
}

static NSString *withEscapes(NSString *text) {
    NSCharacterSet *plain = [NSCharacterSet
        characterSetWithCharactersInString:
            @"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~:/"];
    return [@"="
        stringByAppendingString:[text stringByAddingPercentEncodingWithAllowedCharacters:plain]];
}

static NSString *valueOfNumber(NSNumber *number) {
    if ([number isKindOfClass:[[NSNumber numberWithBool:YES] class]]) {
        return [number boolValue] ? @"b1" : @"b0";
    }
    switch (*[number objCType]) {
    case 'f':
    case 'd':
        return [NSString stringWithFormat:@"d%.17g", [number doubleValue]];
    default:
        return [NSString stringWithFormat:@"i%lld", [number longLongValue]];
    }
}

static NSString *valueOfObject(NSString *kind, id object) {
    if (object == nil) {
        return @"null";
    }
    if ([kind isEqual:@"object"] && [object isKindOfClass:[Model class]]) {
        return [NSString stringWithFormat:@"%lu", numberOfObject(object)];
    }
    if ([kind isEqual:@"text"] && [object isKindOfClass:[NSString class]]) {
        return withEscapes(object);
    }
    if ([kind isEqual:@"url"] && [object isKindOfClass:[NSURL class]]) {
        return withEscapes([object absoluteString]);
    }
    if ([kind isEqual:@"date"] && [object isKindOfClass:[NSDate class]]) {
        return [NSString stringWithFormat:@"%.17g", [object timeIntervalSinceReferenceDate]];
    }
    if ([kind isEqual:@"number"] && [object isKindOfClass:[NSNumber class]]) {
        return valueOfNumber(object);
    }
    return [@"other " stringByAppendingString:NSStringFromClass([object class])];
}

static NSString *valueOfKey(NSCoder *coder, NSString *kind, NSString *key) {
    if (![coder containsValueForKey:key]) {
        return @"missing";
    }
    if ([kind isEqual:@"int64"]) {
        return [NSString stringWithFormat:@"%lld", (long long)[coder decodeInt64ForKey:key]];
    }
    if ([kind isEqual:@"double"]) {
        return [NSString stringWithFormat:@"%.17g", [coder decodeDoubleForKey:key]];
    }
    if ([kind isEqual:@"bool"]) {
        return [coder decodeBoolForKey:key] ? @"1" : @"0";
    }
    return valueOfObject(kind, [coder decodeObjectForKey:key]);
}

@implementation Model

- (void)encodeWithCoder:(NSCoder *)coder {
    for (NSArray *entry in entries) {
        NSString *kind = [entry objectAtIndex:0];
        NSString *key = [entry objectAtIndex:1];
        NSString *value = [entry objectAtIndex:2];
        if ([kind isEqual:@"int64"]) {
            [coder encodeInt64:strtoll([value UTF8String], NULL, 10) forKey:key];
        } else if ([kind isEqual:@"double"]) {
            [coder encodeDouble:strtod([value UTF8String], NULL) forKey:key];
        } else if ([kind isEqual:@"bool"]) {
            [coder encodeBool:[value isEqual:@"1"] forKey:key];
        } else {
            [coder encodeObject:objectOf(kind, value) forKey:key];
        }
    }
}

- (id)initWithCoder:(NSCoder *)coder {
    numberOfObject(self);
    entries = [NSMutableArray new];
    for (Class class = [self class]; class != [Model class]; class = class_getSuperclass(class)) {
        NSString *name = [[classes allKeysForObject:class] objectAtIndex:0];
        for (NSArray *entry in [entriesOfClass objectForKey:name]) {
            NSString *value = valueOfKey(coder, [entry objectAtIndex:0], [entry objectAtIndex:1]);
            [entries
                addObject:[[entry subarrayWithRange:NSMakeRange(0, 2)] arrayByAddingObject:value]];
        }
    }
    return self;
}

@end

// The class of this name, "Name" or "Name:Superclass". It goes by another one in this process where
// the Foundation has one of its own, whose place it takes in archives.
static Class classNamed(NSString *name) {
    NSArray *names = [name componentsSeparatedByString:@":"];
    NSString *own = [names objectAtIndex:0];
    Class class = [classes objectForKey:own];
    if (class == Nil) {
        Class super = [names count] == 1 ? [Model class] : classNamed([names objectAtIndex:1]);
        BOOL isTaken = NSClassFromString(own) != Nil;
        NSString *free = isTaken ? [@"Archived" stringByAppendingString:own] : own;
        class = objc_allocateClassPair(super, strdup([free UTF8String]), 0);
        objc_registerClassPair(class);
        [classes setObject:class forKey:own];
        [NSKeyedArchiver setClassName:own forClass:class];
        [NSKeyedUnarchiver setClass:class forClassName:own];
    }
    return class;
}

// Of each object or class of the input the words of its line, and then its entries.
static NSArray *readInput(void) {
    NSData *input = [[NSFileHandle fileHandleWithStandardInput] readDataToEndOfFile];
    NSString *text = [[NSString alloc] initWithData:input encoding:NSUTF8StringEncoding];
    NSMutableArray *groups = [NSMutableArray new];
    for (NSString *line in [text componentsSeparatedByString:@"\n"]) {
        NSArray *words = [line componentsSeparatedByString:@" "];
        if ([[words objectAtIndex:0] hasSuffix:@"list"]) {
            listLine = [words retain];
            continue;
        }
        if ([words count] < 2) {
            continue;
        }
        NSString *kind = [words objectAtIndex:0];
        NSString *key = [[words objectAtIndex:1] stringByRemovingPercentEncoding];
        BOOL isObject = [kind isEqual:@"object"] && isdigit([key characterAtIndex:0]);
        if (isObject || [kind isEqual:@"class"]) {
            [groups addObject:[NSMutableArray arrayWithObject:words]];
        } else {
            NSRange rest = NSMakeRange(2, [words count] - 2);
            NSString *value = [[words subarrayWithRange:rest] componentsJoinedByString:@" "];
            [[groups lastObject] addObject:[NSArray arrayWithObjects:kind, key, value, nil]];
        }
    }
    return groups;
}

static NSArray *listOf(NSArray *words) {
    NSMutableArray *list = [NSMutableArray array];
    for (NSUInteger at = 1; at < [words count]; ++at) {
        [list addObject:[objectsByNumber objectForKey:[words objectAtIndex:at]]];
    }
    BOOL isMutable = [[words objectAtIndex:0] isEqual:@"mutable-list"];
    return isMutable ? list : [NSArray arrayWithArray:list];
}

static void writeArchive(NSString *path) {
    id root = nil;
    for (NSMutableArray *group in readInput()) {
        NSArray *words = [group objectAtIndex:0];
        Model *object = [classNamed([words objectAtIndex:2]) new];
        [objectsByNumber setObject:object forKey:[words objectAtIndex:1]];
        [group removeObjectAtIndex:0];
        object->entries = [group retain];
        root = root == nil ? object : root;
    }
    root = listLine == nil ? root : listOf(listLine);
    NSData *archive = [NSKeyedArchiver archivedDataWithRootObject:root];
    if (root == nil || ![archive writeToFile:path atomically:NO]) {
        fail(@"no object to write, or no place", path);
    }
}

static void printRoot(id root, NSString *path) {
    BOOL isList = [root isKindOfClass:[NSArray class]];
    NSMutableString *line = [NSMutableString stringWithString:@"list"];
    for (id object in isList ? root : [NSArray arrayWithObject:root]) {
        if (![object isKindOfClass:[Model class]]) {
            fail(@"the root is no object of these classes, nor a list of such", path);
        }
        [line appendFormat:@" %lu", numberOfObject(object)];
    }
    if (isList) {
        printf("%s\n", [line UTF8String]);
    }
}

static void readArchive(NSString *path) {
    for (NSMutableArray *group in readInput()) {
        NSString *name = [[group objectAtIndex:0] objectAtIndex:1];
        classNamed(name);
        [group removeObjectAtIndex:0];
        [entriesOfClass setObject:group
                           forKey:[[name componentsSeparatedByString:@":"] objectAtIndex:0]];
    }
    id root = [NSKeyedUnarchiver unarchiveObjectWithFile:path];
    if (root == nil) {
        fail(@"no archive", path);
    }
    printRoot(root, path);
    for (Model *object in met) {
        NSString *name = [[classes allKeysForObject:[object class]] objectAtIndex:0];
        printf("object %lu %s\n", numberOfObject(object), [name UTF8String]);
        for (NSArray *entry in object->entries) {
            printf("%s\n", [[entry componentsJoinedByString:@" "] UTF8String]);
        }
    }
}

int main(int argc, char **argv) {
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    if (argc != 3) {
        fail(@"usage", @"foundation-archive (read | write) FILE");
    }
    classes = [NSMutableDictionary new];
    entriesOfClass = [NSMutableDictionary new];
    objectsByNumber = [NSMutableDictionary new];
    met = [NSMutableArray new];
    NSString *path = [NSString stringWithUTF8String:argv[2]];
    @try {
        strcmp(argv[1], "write") == 0 ? writeArchive(path) : readArchive(path);
    } @catch (NSException *exception) {
        fail([exception name], [exception reason]);
    }
    [pool drain];
    return 0;
}
