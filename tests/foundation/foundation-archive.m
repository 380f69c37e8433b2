// A real Foundation's keyed archiver and unarchiver, for any class: what the tests compare ours with.
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
// A class may name its superclass ("KLVenue:KLPlace"). The kinds of entries and their values:
//
//   object       the number of an object
//   int64        -5             double    1.5         bool   0 or 1
//   text         =characters    (mutable-text: written as an NSMutableString)
//   url          =characters    or =relative =base
//   date         seconds since 2001
//   number       b1, i-5, u18446744073709551615 or d1.5
//   range        location length
//
// Characters are bytes of UTF-8, those outside letters, digits and "-._~:/" as %XX. In place of the
// value of a kind that is an object there may be "null". What is printed may also be "missing", or
// "other" and the name of the class that was there.
#import <Foundation/Foundation.h>
#import <objc/runtime.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// One line of an object: "kind key value", or of a class: "kind key".
@interface Entry : NSObject
{
@public
  NSString *kind;
  NSString *key;
  NSString *value;
}
@end

@implementation Entry
@end

// GNUstep's NSValue knows no keyed archives; this stands in for the platform's, which archives a
// range under these keys.
@interface RangeValue : NSObject <NSCoding>
{
@public
  NSRange range;
}
@end

@implementation RangeValue
- (void) encodeWithCoder: (NSCoder *)coder
{
  [coder encodeInt: 4 forKey: @"NS.special"];
  [coder encodeObject: [NSNumber numberWithUnsignedInteger: range.length]
               forKey: @"NS.rangeval.length"];
  [coder encodeObject: [NSNumber numberWithUnsignedInteger: range.location]
               forKey: @"NS.rangeval.location"];
}

- (id) initWithCoder: (NSCoder *)coder
{
  if ([coder decodeIntForKey: @"NS.special"] != 4)
    {
      return nil;
    }
  range.length = [[coder decodeObjectForKey: @"NS.rangeval.length"] unsignedIntegerValue];
  range.location = [[coder decodeObjectForKey: @"NS.rangeval.location"] unsignedIntegerValue];
  return self;
}
@end

static void
fail(NSString *what)
{
  fprintf(stderr, "foundation-archive: %s\n", [what UTF8String]);
  exit(1);
}

// The entries of each class (reading), those of each object (writing), by name and by address.
static NSMutableDictionary *entriesOfClass;
static NSMapTable *entriesOfObject;
// Writing: the objects by their numbers. Reading: the objects in the order they were met.
static NSMutableDictionary *objectsByNumber;
static NSMutableArray *met;
// Reading: the printed lines of each object, by its address.
static NSMapTable *linesOfObject;

// Texts

static NSString *
escaped(NSString *text)
{
  NSData *bytes = [text dataUsingEncoding: NSUTF8StringEncoding];
  NSMutableString *result = [NSMutableString string];
  const unsigned char *at = [bytes bytes];
  const unsigned char *end = at + [bytes length];
  for (; at < end; at++)
    {
      if (*at != 0 && *at < 0x80
        && strchr("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~:/", *at))
        {
          [result appendFormat: @"%c", *at];
        }
      else
        {
          [result appendFormat: @"%%%02X", *at];
        }
    }
  return result;
}

static NSString *
unescaped(NSString *text)
{
  const char *at = [text UTF8String];
  NSMutableData *bytes = [NSMutableData data];
  while (*at != 0)
    {
      char byte = *at++;
      if (byte == '%')
        {
          char digits[3] = { at[0], at[1], 0 };
          byte = (char)strtol(digits, NULL, 16);
          at += 2;
        }
      [bytes appendBytes: &byte length: 1];
    }
  return [[NSString alloc] initWithData: bytes encoding: NSUTF8StringEncoding];
}

// Writing

static NSString *
charactersOf(NSString *value)
{
  if (![value hasPrefix: @"="])
    {
      fail([@"no characters: " stringByAppendingString: value]);
    }
  return unescaped([value substringFromIndex: 1]);
}

static id
numberOf(NSString *value)
{
  const char *digits = [value UTF8String] + 1;
  switch ([value characterAtIndex: 0])
    {
      case 'b': return [NSNumber numberWithBool: *digits == '1'];
      case 'i': return [NSNumber numberWithLongLong: strtoll(digits, NULL, 10)];
      case 'u': return [NSNumber numberWithUnsignedLongLong: strtoull(digits, NULL, 10)];
      case 'd': return [NSNumber numberWithDouble: strtod(digits, NULL)];
      default: fail([@"no number: " stringByAppendingString: value]); return nil;
    }
}

static id
urlOf(NSString *value)
{
  NSArray *parts = [value componentsSeparatedByString: @" "];
  if ([parts count] == 1)
    {
      return [NSURL URLWithString: charactersOf(value)];
    }
  return [NSURL URLWithString: charactersOf([parts objectAtIndex: 0])
                relativeToURL: [NSURL URLWithString: charactersOf([parts objectAtIndex: 1])]];
}

static id
rangeOf(NSString *value)
{
  char *end;
  RangeValue *result = [RangeValue new];
  result->range.location = strtoull([value UTF8String], &end, 10);
  result->range.length = strtoull(end, NULL, 10);
  return result;
}

static id
objectOf(Entry *entry)
{
  NSString *kind = entry->kind;
  NSString *value = entry->value;
  if ([value isEqual: @"null"]) return nil;
  if ([kind isEqual: @"object"]) return [objectsByNumber objectForKey: value];
  if ([kind isEqual: @"text"]) return charactersOf(value);
  if ([kind isEqual: @"mutable-text"]) return [charactersOf(value) mutableCopy];
  if ([kind isEqual: @"url"]) return urlOf(value);
  if ([kind isEqual: @"number"]) return numberOf(value);
  if ([kind isEqual: @"range"]) return rangeOf(value);
  if ([kind isEqual: @"date"])
    {
      double seconds = strtod([value UTF8String], NULL);
      return [NSDate dateWithTimeIntervalSinceReferenceDate: seconds];
    }
  fail([@"no kind: " stringByAppendingString: kind]);
  return nil;
}

static void
encodeWithCoder(id self, SEL _cmd, NSCoder *coder)
{
  for (Entry *entry in (NSArray *)NSMapGet(entriesOfObject, self))
    {
      const char *value = [entry->value UTF8String];
      if ([entry->kind isEqual: @"int64"])
        {
          [coder encodeInt64: strtoll(value, NULL, 10) forKey: entry->key];
        }
      else if ([entry->kind isEqual: @"double"])
        {
          [coder encodeDouble: strtod(value, NULL) forKey: entry->key];
        }
      else if ([entry->kind isEqual: @"bool"])
        {
          [coder encodeBool: value[0] == '1' forKey: entry->key];
        }
      else
        {
          [coder encodeObject: objectOf(entry) forKey: entry->key];
        }
    }
}

// Reading

static NSUInteger
numberOfObject(id object)
{
  NSUInteger index = [met indexOfObjectIdenticalTo: object];
  if (index == NSNotFound)
    {
      [met addObject: object];
      index = [met count] - 1;
    }
  return index + 1;
}

static NSString *
valueOfNumber(NSNumber *number)
{
  if ([number isKindOfClass: [[NSNumber numberWithBool: YES] class]])
    {
      return [number boolValue] ? @"b1" : @"b0";
    }
  switch (*[number objCType])
    {
      case 'f':
      case 'd': return [NSString stringWithFormat: @"d%.17g", [number doubleValue]];
      case 'Q':
      case 'L': return [NSString stringWithFormat: @"u%llu", [number unsignedLongLongValue]];
      default: return [NSString stringWithFormat: @"i%lld", [number longLongValue]];
    }
}

static NSString *
valueOfObject(NSString *kind, id object)
{
  if (object == nil) return @"null";
  if ([kind isEqual: @"object"] && NSMapGet(linesOfObject, object))
    {
      return [NSString stringWithFormat: @"%lu", (unsigned long)numberOfObject(object)];
    }
  if ([kind isEqual: @"text"] && [object isKindOfClass: [NSString class]])
    {
      return [@"=" stringByAppendingString: escaped(object)];
    }
  if ([kind isEqual: @"url"] && [object isKindOfClass: [NSURL class]])
    {
      return [@"=" stringByAppendingString: escaped([object absoluteString])];
    }
  if ([kind isEqual: @"date"] && [object isKindOfClass: [NSDate class]])
    {
      double seconds = [object timeIntervalSinceReferenceDate];
      return [NSString stringWithFormat: @"%.17g", seconds];
    }
  if ([kind isEqual: @"number"] && [object isKindOfClass: [NSNumber class]])
    {
      return valueOfNumber(object);
    }
  if ([kind isEqual: @"range"] && [object isKindOfClass: [RangeValue class]])
    {
      NSRange range = ((RangeValue *)object)->range;
      return [NSString stringWithFormat: @"%llu %llu", (unsigned long long)range.location,
        (unsigned long long)range.length];
    }
  return [@"other " stringByAppendingString: NSStringFromClass([object class])];
}

static NSString *
valueOfKey(NSCoder *coder, NSString *kind, NSString *key)
{
  if (![coder containsValueForKey: key])
    {
      return @"missing";
    }
  if ([kind isEqual: @"int64"])
    {
      return [NSString stringWithFormat: @"%lld", (long long)[coder decodeInt64ForKey: key]];
    }
  if ([kind isEqual: @"double"])
    {
      return [NSString stringWithFormat: @"%.17g", [coder decodeDoubleForKey: key]];
    }
  if ([kind isEqual: @"bool"])
    {
      return [coder decodeBoolForKey: key] ? @"1" : @"0";
    }
  return valueOfObject(kind, [coder decodeObjectForKey: key]);
}

static id
initWithCoder(id self, SEL _cmd, NSCoder *coder)
{
  NSMutableArray *lines = [NSMutableArray array];
  NSMapInsert(linesOfObject, self, [lines retain]);
  numberOfObject(self);
  for (Class class = [self class]; class != Nil; class = class_getSuperclass(class))
    {
      for (Entry *entry in [entriesOfClass objectForKey: NSStringFromClass(class)])
        {
          [lines addObject: [NSString stringWithFormat: @"%@ %@ %@", entry->kind, entry->key,
            valueOfKey(coder, entry->kind, entry->key)]];
        }
    }
  return self;
}

// The two formats

// The class of this name, "Name" or "Name:Superclass", with the archiving methods.
static Class
classNamed(NSString *name)
{
  NSRange colon = [name rangeOfString: @":"];
  NSString *own = colon.location == NSNotFound ? name : [name substringToIndex: colon.location];
  Class class = NSClassFromString(own);
  if (class == Nil)
    {
      Class super = colon.location == NSNotFound
        ? [NSObject class] : classNamed([name substringFromIndex: NSMaxRange(colon)]);
      class = objc_allocateClassPair(super, strdup([own UTF8String]), 0);
      class_addMethod(class, @selector(encodeWithCoder:), (IMP)encodeWithCoder, "v@:@");
      class_addMethod(class, @selector(initWithCoder:), (IMP)initWithCoder, "@@:@");
      objc_registerClassPair(class);
    }
  return class;
}

static NSArray *
linesOfInput(void)
{
  NSData *input = [[NSFileHandle fileHandleWithStandardInput] readDataToEndOfFile];
  NSString *text = [[NSString alloc] initWithData: input encoding: NSUTF8StringEncoding];
  return [text componentsSeparatedByString: @"\n"];
}

static Entry *
entryOf(NSArray *words)
{
  Entry *entry = [Entry new];
  NSUInteger count = [words count];
  entry->kind = [[words objectAtIndex: 0] retain];
  entry->key = [unescaped([words objectAtIndex: 1]) retain];
  NSRange rest = NSMakeRange(2, count - 2);
  entry->value = [[[words subarrayWithRange: rest] componentsJoinedByString: @" "] retain];
  return entry;
}

static void
writeArchive(NSString *path)
{
  id root = nil;
  NSMutableArray *entries = nil;
  for (NSString *line in linesOfInput())
    {
      NSArray *words = [line componentsSeparatedByString: @" "];
      if ([words count] < 2) continue;
      BOOL isObject = [[words objectAtIndex: 0] isEqual: @"object"] && [words count] == 3
        && isdigit([line characterAtIndex: 7]);
      if (!isObject)
        {
          [entries addObject: entryOf(words)];
          continue;
        }
      id object = [classNamed([words objectAtIndex: 2]) new];
      entries = [NSMutableArray new];
      NSMapInsert(entriesOfObject, object, entries);
      [objectsByNumber setObject: object forKey: [words objectAtIndex: 1]];
      root = root == nil ? object : root;
    }
  if (root == nil)
    {
      fail(@"no object to write");
    }
  NSData *archive = [NSKeyedArchiver archivedDataWithRootObject: root];
  if (![archive writeToFile: path atomically: NO])
    {
      fail([@"cannot write " stringByAppendingString: path]);
    }
}

static void
readArchive(NSString *path)
{
  NSMutableArray *entries = nil;
  for (NSString *line in linesOfInput())
    {
      NSArray *words = [line componentsSeparatedByString: @" "];
      if ([words count] < 2) continue;
      if (![[words objectAtIndex: 0] isEqual: @"class"])
        {
          [entries addObject: entryOf(words)];
          continue;
        }
      Class class = classNamed([words objectAtIndex: 1]);
      entries = [NSMutableArray array];
      [entriesOfClass setObject: entries forKey: NSStringFromClass(class)];
    }
  NSData *archive = [NSData dataWithContentsOfFile: path];
  if (archive == nil)
    {
      fail([@"cannot read " stringByAppendingString: path]);
    }
  id root = [NSKeyedUnarchiver unarchiveObjectWithData: archive];
  if (root == nil || NSMapGet(linesOfObject, root) == NULL)
    {
      fail(@"the root is no object of these classes");
    }
  for (NSUInteger index = 0; index < [met count]; index++)
    {
      id object = [met objectAtIndex: index];
      printf("object %lu %s\n", (unsigned long)index + 1, class_getName([object class]));
      for (NSString *line in (NSArray *)NSMapGet(linesOfObject, object))
        {
          printf("%s\n", [line UTF8String]);
        }
    }
}

int
main(int argc, char **argv)
{
  NSAutoreleasePool *pool = [NSAutoreleasePool new];
  if (argc != 3)
    {
      fail(@"usage: foundation-archive (read | write) FILE");
    }
  entriesOfClass = [NSMutableDictionary new];
  objectsByNumber = [NSMutableDictionary new];
  met = [NSMutableArray new];
  entriesOfObject = NSCreateMapTable(NSNonOwnedPointerMapKeyCallBacks,
    NSNonOwnedPointerMapValueCallBacks, 8);
  linesOfObject = NSCreateMapTable(NSNonOwnedPointerMapKeyCallBacks,
    NSNonOwnedPointerMapValueCallBacks, 8);
  [NSKeyedArchiver setClassName: @"NSValue" forClass: [RangeValue class]];
  [NSKeyedUnarchiver setClass: [RangeValue class] forClassName: @"NSValue"];
  NSString *path = [NSString stringWithUTF8String: argv[2]];
  @try
    {
      strcmp(argv[1], "write") == 0 ? writeArchive(path) : readArchive(path);
    }
  @catch (NSException *exception)
    {
      fail([NSString stringWithFormat: @"%@: %@", [exception name], [exception reason]]);
    }
  [pool drain];
  return 0;
}
