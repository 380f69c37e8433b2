#import <KeloAPIObjC/model/KLTag.h>

#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPI/platform/archive/KeyedArchiver.hpp>
#include <KeloAPI/platform/archive/KeyedUnarchiver.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Coding.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Tag = KeloAPI::KLTag;

namespace {

/// What an archive keeps of a tag. Only an archive gives one whose name is taken as it is, so one
/// is made for it.
class KeptTag final : public KeloAPI::Archivable {
public:
    explicit KeptTag(NSCoder *coder)
        : _tagId(decodedText(coder, @"tagId"))
        , _name(decodedText(coder, @"name")) {}
    ~KeptTag() override;

    std::vector<std::string_view> archivedClassNames() const override {
        return {Tag::archivedClassName};
    }
    void encodeWithCoder(KeloAPI::KeyedArchiver &coder) const override {
        coder.encodeText(_tagId, "tagId");
        coder.encodeText(_name, "name");
    }

private:
    const std::optional<std::string> _tagId;
    const std::optional<std::string> _name;
};

KeptTag::~KeptTag() = default;

std::shared_ptr<Tag> decodedTag(NSCoder *coder) {
    const auto archive = KeloAPI::KeyedArchiver::archivedData(std::make_shared<KeptTag>(coder));
    return KeloAPI::KeyedUnarchiver::unarchive<Tag>(archive);
}

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
    const auto tag = decodedTag(coder);
    if (self == nil || tag == nullptr) { // beyond what an archive may hold
        [self release];
        return nil;
    }
    return hold(self, tag);
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
