#import <KeloAPIObjC/model/KLEntity.h>

#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Coding.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/RangeCoding.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Entity = KeloAPI::KLEntity;

namespace {

KeloAPI::Range crossed(NSRange range) {
    return {static_cast<std::int64_t>(range.location), static_cast<std::int64_t>(range.length)};
}

NSRange crossed(KeloAPI::Range range) {
    return NSMakeRange(static_cast<NSUInteger>(range.location),
                       static_cast<NSUInteger>(range.length));
}

} // namespace

@implementation KLEntity

+ (void)load {
    add<Entity>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.KLEntity");
}

- (instancetype)initWithIdString:(NSString *)idString
                            type:(NSString *)type
                           title:(NSString *)title
                            link:(NSString *)link
                           range:(NSRange)range {
    self = [super init];
    return self == nil
               ? nil
               : hold(self, std::make_shared<Entity>(optionalText(idString), optionalText(type),
                                                     text(title), text(link), crossed(range)));
}

- (instancetype)initWithCoder:(NSCoder *)coder {
    self = [super init];
    return holdMade(self, [&] {
        const NSRange range = decodedRange(coder, @"range").value_or(NSMakeRange(0, 0));
        return std::make_shared<Entity>(decodedText(coder, @"idString"),
                                        decodedText(coder, @"type"),
                                        decodedText(coder, @"title").value_or(""),
                                        decodedText(coder, @"link").value_or(""), crossed(range));
    });
}

- (void)encodeWithCoder:(NSCoder *)coder {
    [coder encodeObject:self.idString forKey:@"idString"];
    [coder encodeObject:self.type forKey:@"type"];
    [coder encodeObject:self.title forKey:@"title"];
    [coder encodeObject:self.link forKey:@"link"];
    encodeRange(coder, self.range, @"range");
}

- (BOOL)isEqual:(id)object {
    return [object isKindOfClass:[KLEntity class]] &&
           held<Entity>(self) == held<Entity>(static_cast<KLEntity *>(object));
}

- (NSUInteger)hash {
    return std::hash<Entity>()(held<Entity>(self));
}

- (NSString *)idString {
    return string(held<Entity>(self).idString());
}

- (NSString *)type {
    return string(held<Entity>(self).type());
}

- (NSString *)title {
    return string(held<Entity>(self).title());
}

- (NSString *)link {
    return string(held<Entity>(self).link());
}

- (NSString *)applicationLink {
    return string(held<Entity>(self).applicationLink());
}

- (NSRange)range {
    return crossed(held<Entity>(self).range);
}

- (void)setRange:(NSRange)range {
    held<Entity>(self).range = crossed(range);
}

@end
