#include <KeloAPIObjC/bridge/Coding.hpp>

#include <KeloAPIObjC/bridge/RangeCoding.hpp>

namespace KeloBridge {

id decodedObject(NSCoder *coder, NSString *key, Class expected) {
    id object = [coder decodeObjectForKey:key];
    return [object isKindOfClass:expected] ? object : nil;
}

void decode(NSCoder *coder, bool &member, NSString *key) {
    member = [coder decodeBoolForKey:key] != NO;
}

void decode(NSCoder *coder, double &member, NSString *key) {
    member = [coder decodeDoubleForKey:key];
}

void raiseNotArchived(id object, NSCoder *coder) {
    // GNUstep's archiver releases the dictionary that it is writing into, which it does not own,
    // when it goes after an object has raised.
    if ([coder isKindOfClass:[NSKeyedArchiver class]]) {
        Ivar written = class_getInstanceVariable([NSKeyedArchiver class], "_enc");
        [(written == nullptr ? nil : object_getIvar(coder, written)) retain];
    }
    [NSException raise:NSInvalidArgumentException
                format:@"objects of class %@ are not archived", [object class]];
    __builtin_unreachable();
}

void encode(NSCoder *coder, id value, NSString *key) {
    [coder encodeObject:value forKey:key];
}

void encode(NSCoder *coder, BOOL value, NSString *key) {
    [coder encodeBool:value forKey:key];
}

void encode(NSCoder *coder, double value, NSString *key) {
    [coder encodeDouble:value forKey:key];
}

void encode(NSCoder *coder, int64_t value, NSString *key) {
    [coder encodeInt64:value forKey:key];
}

void encode(NSCoder *coder, NSRange value, NSString *key) {
    encodeRange(coder, value, key);
}

} // namespace KeloBridge
