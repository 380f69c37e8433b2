#import <KeloAPIObjC/model/KLTag.h>

#include <KeloAPI/archive/KeyedArchiver.hpp>
#include <KeloAPI/archive/KeyedUnarchiver.hpp>
#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Coding.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Tag = KeloAPI::KLTag;

namespace {

/// A tag as it is kept. Only an archive makes a tag of it whose name has no "#" added.
struct KeptTag final : KeloAPI::Archivable {
    std::vector<std::string_view> archivedClassNames() const override {
        return {Tag::archivedClassName};
    }
    void encodeWithCoder(KeloAPI::KeyedArchiver &coder) const override {
        coder.encodeText(tagId, "tagId");
        coder.encodeText(name, "name");
    }
    std::string tagId;
    std::string name;
};

} // namespace

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
        const auto kept = std::make_shared<KeptTag>();
        kept->tagId = decodedText(coder, @"tagId").value_or("");
        kept->name = decodedText(coder, @"name").value_or("");
        return KeloAPI::KeyedUnarchiver::unarchive<Tag>(KeloAPI::KeyedArchiver::archivedData(kept));
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
