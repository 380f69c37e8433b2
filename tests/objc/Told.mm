#include "objc/Told.hpp"

#include <cstring>
#include <sstream>

namespace KeloObjcTest {

namespace {

std::string listed(NSArray *list) {
    std::string text = "[";
    for (NSUInteger i = 0; i < [list count]; ++i) {
        text += (i == 0 ? "" : " ") + told([list objectAtIndex:i]);
    }
    return text + "]";
}

std::string instant(NSDate *date) {
    NSString *seconds = [NSString stringWithFormat:@"%.6f", [date timeIntervalSince1970]];
    std::string text = [seconds UTF8String];
    text.erase(text.find_last_not_of('0') + 1);
    return text + (text.back() == '.' ? "0s" : "s");
}

} // namespace

std::string told(id value) {
    if (value == nil) {
        return "nil";
    }
    if ([value isKindOfClass:[NSString class]]) {
        return std::string("\"") + [value UTF8String] + "\"";
    }
    if ([value isKindOfClass:[NSURL class]]) {
        return std::string("<") + [[value absoluteString] UTF8String] + ">";
    }
    if ([value isKindOfClass:[NSDate class]]) {
        return instant(value);
    }
    if ([value isKindOfClass:[NSNumber class]]) {
        return [[value stringValue] UTF8String];
    }
    if ([value isKindOfClass:[NSArray class]]) {
        return listed(value);
    }
    if ([value isKindOfClass:[NSValue class]] &&
        std::strcmp([value objCType], @encode(NSRange)) == 0) {
        const NSRange range = [value rangeValue];
        return "{" + std::to_string(range.location) + ", " + std::to_string(range.length) + "}";
    }
    return class_getName([value class]);
}

std::string told(id object, const char *names) {
    std::istringstream words(names);
    std::string text;
    for (std::string name; words >> name;) {
        NSString *key = [NSString stringWithUTF8String:name.c_str()];
        text += (text.empty() ? "" : " ") + told([object valueForKey:key]);
    }
    return text;
}

bool isNow(NSDate *date) {
    const double age = -[date timeIntervalSinceNow];
    return age > -1e-3 && age < 10;
}

} // namespace KeloObjcTest
