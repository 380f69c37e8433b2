// In plain Objective-C, which has fast enumeration.
#import <Foundation/Foundation.h>

/// Writes down what is encoded.
@interface KeloRecordingCoder : NSCoder {
@public
    NSMutableString *lines;
}
@end

@implementation KeloRecordingCoder

- (BOOL)allowsKeyedCoding {
    return YES;
}

- (void)encodeObject:(id)object forKey:(NSString *)key {
    [lines appendFormat:@"object %@ %@\n", key, object];
}

- (void)encodeDouble:(double)value forKey:(NSString *)key {
    [lines appendFormat:@"double %@ %g\n", key, value];
}

- (void)encodeBool:(BOOL)value forKey:(NSString *)key {
    [lines appendFormat:@"bool %@ %d\n", key, value];
}

@end

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
    KeloRecordingCoder *coder = [[KeloRecordingCoder new] autorelease];
    coder->lines = [NSMutableString string];
    [object encodeWithCoder:coder];
    return coder->lines;
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
