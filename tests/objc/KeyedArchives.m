// In plain Objective-C, which has fast enumeration.
#import <Foundation/Foundation.h>

/// Writes down what is encoded: lines of everything, and the keys alone.
@interface KeloRecordingCoder : NSCoder {
@public
    NSMutableString *lines;
    NSMutableArray *keys;
}
@end

@implementation KeloRecordingCoder

- (BOOL)allowsKeyedCoding {
    return YES;
}

- (void)encodeObject:(id)object forKey:(NSString *)key {
    [lines appendFormat:@"object %@ %@\n", key, object];
    NSString *kind = [object isKindOfClass:[NSValue class]] ? @"value " : @"object ";
    [keys addObject:[kind stringByAppendingString:key]];
}

- (void)encodeInt64:(int64_t)value forKey:(NSString *)key {
    [lines appendFormat:@"integer %@ %lld\n", key, (long long)value];
    [keys addObject:[NSString stringWithFormat:@"integer %@ %lld", key, (long long)value]];
}

- (void)encodeDouble:(double)value forKey:(NSString *)key {
    [lines appendFormat:@"double %@ %g\n", key, value];
    [keys addObject:[@"double " stringByAppendingString:key]];
}

- (void)encodeBool:(BOOL)value forKey:(NSString *)key {
    [lines appendFormat:@"bool %@ %d\n", key, value];
    [keys addObject:[@"bool " stringByAppendingString:key]];
}

@end

static KeloRecordingCoder *recorded(id<NSCoding> object) {
    KeloRecordingCoder *coder = [[KeloRecordingCoder new] autorelease];
    coder->lines = [NSMutableString string];
    coder->keys = [NSMutableArray array];
    [object encodeWithCoder:coder];
    return coder;
}

/// Archives any objects under any keys.
@interface KeloAnyObject : NSObject {
@public
    NSDictionary *members;
}
@end

@implementation KeloAnyObject

- (void)encodeWithCoder:(NSCoder *)coder {
    for (NSString *key in members) {
        [coder encodeObject:[members objectForKey:key] forKey:key];
    }
}

@end

NSString *KeloEncodedLines(id<NSCoding> object) {
    return recorded(object)->lines;
}

NSString *KeloEncodedKeys(id<NSCoding> object) {
    return [recorded(object)->keys componentsJoinedByString:@", "];
}

NSData *KeloArchiveOf(NSString *className, NSDictionary *members) {
    KeloAnyObject *object = [[KeloAnyObject new] autorelease];
    object->members = members;
    NSMutableData *bytes = [NSMutableData data];
    NSKeyedArchiver *archiver =
        [[[NSKeyedArchiver alloc] initForWritingWithMutableData:bytes] autorelease];
    [archiver setClassName:className forClass:[KeloAnyObject class]];
    [archiver encodeObject:object forKey:@"root"];
    [archiver finishEncoding];
    return bytes;
}
