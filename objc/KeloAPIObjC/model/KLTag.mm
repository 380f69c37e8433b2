#import <KeloAPIObjC/model/KLTag.h>

#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Coding.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Tag = KeloAPI::KLTag;

@implementation KLTag

+ (void)load {
    add<Tag>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.KLTag");
}

- (instancetype)initWithTagId:(NSString *)tagId name:(NSString *)name {
    self = [super init];
    return self == nil ? nil : hold(self, std::make_shared<Tag>(text(tagId), text(name)));
}

- (instancetype)initWithName:(NSString *)name {
    self = [super init];
    return self == nil ? nil : hold(self, std::make_shared<Tag>(text(name)));
}

- (instancetype)initWithCoder:(NSCoder *)coder {
    self = [super init];
    return holdMade(self, [&] {
        return Tag::kept(decodedText(coder, @"tagId").value_or(""),
                         decodedText(coder, @"name").value_or(""));
    });
}

- (void)encodeWithCoder:(NSCoder *)coder {
    [coder encodeObject:self.tagId forKey:@"tagId"];
    [coder encodeObject:self.name forKey:@"name"];
}

- (NSString *)tagId {
    return string(held<Tag>(self).tagId());
}

- (NSString *)name {
    return string(held<Tag>(self).name());
}

- (NSString *)nameWithoutHash {
    return string(held<Tag>(self).nameWithoutHash());
}

- (NSInteger)count {
    return held<Tag>(self).count;
}

- (void)setCount:(NSInteger)count {
    held<Tag>(self).count = count;
}

@end
