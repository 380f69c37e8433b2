#include <KeloAPIObjC/bridge/Parameters.hpp>

#include <KeloAPIObjC/bridge/Values.hpp>

#include <variant>

namespace KeloBridge {

namespace {

using KeloAPI::Number;
using KeloAPI::ParameterList;
using KeloAPI::ParameterValue;

/// Makes the Foundation's object of each kind of value.
struct ToObject {
    id operator()(std::nullptr_t) const { return [NSNull null]; }
    id operator()(bool known) const { return [NSNumber numberWithBool:known]; }
    id operator()(std::int64_t known) const { return [NSNumber numberWithLongLong:known]; }
    id operator()(std::uint64_t known) const { return [NSNumber numberWithUnsignedLongLong:known]; }
    id operator()(double known) const { return [NSNumber numberWithDouble:known]; }
    id operator()(const std::string &known) const { return string(known); }
    id operator()(const ParameterList &known) const {
        NSMutableArray *made = [NSMutableArray arrayWithCapacity:known.size()];
        for (const ParameterValue &one : known) {
            [made addObject:std::visit(*this, one.held())];
        }
        return made;
    }
    id operator()(const KeloAPI::Parameters &known) const { return parameters(known); }
};

ParameterValue numberValue(const Number &known) {
    switch (known.kind()) {
    case Number::Kind::Boolean:
        return known.boolValue();
    case Number::Kind::Signed:
        return known.int64Value();
    case Number::Kind::Unsigned:
        return known.uint64Value();
    case Number::Kind::Double:
        break;
    }
    return known.doubleValue();
}

ParameterValue valueOf(id object) {
    if ([object isKindOfClass:[NSString class]]) {
        return text(object);
    }
    if ([object isKindOfClass:[NSNumber class]]) {
        return numberValue(number(static_cast<NSNumber *>(object)));
    }
    if ([object isKindOfClass:[NSDictionary class]]) {
        return parameters(static_cast<NSDictionary *>(object));
    }
    if ([object isKindOfClass:[NSArray class]]) {
        ParameterList made;
        for (NSUInteger i = 0; i < [object count]; ++i) {
            made.push_back(valueOf([object objectAtIndex:i]));
        }
        return made;
    }
    if (object != [NSNull null]) {
        [NSException raise:NSInvalidArgumentException format:@"no parameter: %@", object];
    }
    return nullptr;
}

} // namespace

NSDictionary *parameters(const KeloAPI::Parameters &parameters) {
    NSMutableDictionary *made = [NSMutableDictionary dictionaryWithCapacity:parameters.size()];
    for (const auto &[key, known] : parameters) {
        [made setObject:std::visit(ToObject(), known.held()) forKey:string(key)];
    }
    return made;
}

KeloAPI::Parameters parameters(NSDictionary *parameters) {
    KeloAPI::Parameters made;
    NSEnumerator *keys = [parameters keyEnumerator];
    for (id key = [keys nextObject]; key != nil; key = [keys nextObject]) {
        if (![key isKindOfClass:[NSString class]]) {
            [NSException raise:NSInvalidArgumentException format:@"no parameter's name: %@", key];
        }
        made.insert_or_assign(text(key), valueOf([parameters objectForKey:key]));
    }
    return made;
}

} // namespace KeloBridge
