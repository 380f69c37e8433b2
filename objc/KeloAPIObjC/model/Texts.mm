#import <KeloAPIObjC/model/KLByline.h>
#import <KeloAPIObjC/model/KLEntity.h>
#import <KeloAPIObjC/model/KLTag.h>

#include <KeloAPI/archive/KeyedArchiver.hpp>
#include <KeloAPI/archive/KeyedUnarchiver.hpp>
#include <KeloAPI/model/KLByline.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPIObjC/bridge/RangeCoding.hpp>
#include <KeloAPIObjC/bridge/Table.hpp>

using namespace KeloBridge;

namespace {

std::shared_ptr<KeloAPI::KLEntity> decodedEntity(NSCoder *coder) {
    const NSRange stretch = decodedRange(coder, @"range").value_or(NSMakeRange(0, 0));
    return std::make_shared<KeloAPI::KLEntity>(
        decoded<std::string>(coder, @"idString"), decoded<std::string>(coder, @"type"),
        decoded<std::string>(coder, @"title").value_or(""),
        decoded<std::string>(coder, @"link").value_or(""), range(stretch));
}

/// A tag as it is kept. Only an archive makes a tag of it whose name has no "#" added.
struct KeptTag final : KeloAPI::Archivable {
    std::vector<std::string_view> archivedClassNames() const override {
        return {KeloAPI::KLTag::archivedClassName};
    }
    void encodeWithCoder(KeloAPI::KeyedArchiver &coder) const override {
        coder.encodeText(tagId, "tagId");
        coder.encodeText(name, "name");
    }
    std::string tagId;
    std::string name;
};

std::shared_ptr<KeloAPI::KLTag> decodedTag(NSCoder *coder) {
    const auto kept = std::make_shared<KeptTag>();
    decode(coder, kept->tagId, @"tagId");
    decode(coder, kept->name, @"name");
    return KeloAPI::KeyedUnarchiver::unarchive<KeloAPI::KLTag>(
        KeloAPI::KeyedArchiver::archivedData(kept));
}

} // namespace

@implementation KLByline

KELO_STANDS_FOR(KLByline, KeloAPI::KLByline)
KELO_NO_INIT()
KELO_READS(NSString *, text)
KELO_FIELD(NSURL *, iconUrl, setIconUrl)
KELO_FIELD(NSArray *, entities, setEntities)

- (instancetype)initWithText:(NSString *)text {
    return KELO_MAKE(KeloBridge::text(text));
}

@end

@implementation KLEntity

KELO_STANDS_FOR(KLEntity, KeloAPI::KLEntity)
KELO_NO_INIT()
KELO_READS(NSString *, idString, type, title, link, applicationLink)
KELO_FIELD(NSRange, range, setRange)
KELO_COMPARES(KLEntity)
KELO_ENCODES(idString, type, title, link, range)
KELO_DECODES(decodedEntity(coder))

- (instancetype)initWithIdString:(NSString *)idString
                            type:(NSString *)type
                           title:(NSString *)title
                            link:(NSString *)link
                           range:(NSRange)range {
    return KELO_MAKE(optionalText(idString), optionalText(type), text(title), text(link),
                     KeloBridge::range(range));
}

@end

@implementation KLTag

KELO_STANDS_FOR(KLTag, KeloAPI::KLTag)
KELO_NO_INIT()
KELO_READS(NSString *, tagId, name, nameWithoutHash)
KELO_FIELD(NSInteger, count, setCount)
KELO_ENCODES(tagId, name)
KELO_DECODES(decodedTag(coder))

- (instancetype)initWithTagId:(NSString *)tagId name:(NSString *)name {
    return KELO_MAKE(text(tagId), text(name));
}

- (instancetype)initWithName:(NSString *)name {
    return KELO_MAKE(text(name));
}

@end
