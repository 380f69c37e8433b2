#import <KeloAPIObjC/model/KLPostsMosaic.h>

#include <KeloAPI/model/KLPostsMosaic.hpp>
#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using PostsMosaic = KeloAPI::KLPostsMosaic;
using MosaicType = KeloAPI::KLPostsMosaicType;

namespace {

constexpr const char *className = "KeloAPI.KLPostsMosaic";

MosaicType layout(KLPostsMosaicType type) {
    return requiredCase<MosaicType>(type, KLPostsMosaicTypeSmallThumbnails, @"layout of a mosaic");
}

} // namespace

@implementation KLPostsMosaic

+ (void)load {
    add<PostsMosaic>(self);
}

- (instancetype)init {
    unimplemented("init()", className);
}

- (instancetype)initWithReference:(NSString *)reference closeable:(BOOL)closeable {
    unimplemented("init(reference:closeable:)", className);
}

- (instancetype)initWithPosts:(KLPagedData *)posts
                        title:(NSString *)title
                  description:(NSString *)description
                         link:(NSString *)link
                    reference:(NSString *)reference
                    closeable:(BOOL)closeable
                         type:(KLPostsMosaicType)type
                     pinnable:(BOOL)pinnable {
    return holdMade(self, [&] {
        return std::make_shared<PostsMosaic>(shared<KeloAPI::KLPagedData>(posts), text(title),
                                             text(description), text(link), text(reference),
                                             closeable != NO, layout(type), pinnable != NO);
    });
}

- (KLPagedData *)posts {
    return wrap(held<PostsMosaic>(self).posts());
}

- (NSString *)title {
    return string(held<PostsMosaic>(self).title());
}

- (NSString *)subtitle {
    return string(held<PostsMosaic>(self).subtitle());
}

- (NSString *)link {
    return string(held<PostsMosaic>(self).link());
}

- (KLPostsMosaicType)type {
    return static_cast<KLPostsMosaicType>(held<PostsMosaic>(self).type());
}

- (BOOL)pinnable {
    return held<PostsMosaic>(self).pinnable();
}

@end
