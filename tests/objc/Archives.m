#import <Foundation/Foundation.h>

NSString *KeloEncodedKeys(id<NSCoding> object);

/// Writes down what is encoded.
@interface KeloKeyRecorder : NSCoder {
@public
    NSMutableArray *keys;
}
@end

@implementation KeloKeyRecorder

- (BOOL)allowsKeyedCoding {
    return YES;
}

- (void)encodeObject:(id)object forKey:(NSString *)key {
    NSString *kind = [object isKindOfClass:[NSValue class]] ? @"value " : @"object ";
    [keys addObject:[kind stringByAppendingString:key]];
}

- (void)encodeInt64:(int64_t)value forKey:(NSString *)key {
    [keys addObject:[NSString stringWithFormat:@"integer %@ %lld", key, (long long)value]];
}

@end

NSString *KeloEncodedKeys(id<NSCoding> object) {
    KeloKeyRecorder *coder = [[KeloKeyRecorder new] autorelease];
    coder->keys = [NSMutableArray array];
    [object encodeWithCoder:coder];
    return [coder->keys componentsJoinedByString:@", "];
}
