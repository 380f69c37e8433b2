#import <KeloAPIObjC/model/KLUserMosaic.h>

#include <KeloAPI/model/KLUserMosaic.hpp>
#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using UserMosaic = KeloAPI::KLUserMosaic;

namespace {

constexpr const char *className = "KeloAPI.KLUserMosaic";

} // namespace

@implementation KLUserMosaic

+ (void)load {
    add<UserMosaic>(self);
}

- (instancetype)init {
    unimplemented("init()", className);
}

- (instancetype)initWithReference:(NSString *)reference closeable:(BOOL)closeable {
    unimplemented("init(reference:closeable:)", className);
}

- (instancetype)initWithUsers:(KLPagedData *)users
                        title:(NSString *)title
                  description:(NSString *)description
                         link:(NSString *)link
                    reference:(NSString *)reference
                    closeable:(BOOL)closeable {
    return holdMade(self, [&] {
        return std::make_shared<UserMosaic>(shared<KeloAPI::KLPagedData>(users), text(title),
                                            text(description), text(link), text(reference),
                                            closeable != NO);
    });
}

- (KLPagedData *)users {
    return wrap(held<UserMosaic>(self).users());
}

- (NSString *)title {
    return string(held<UserMosaic>(self).title());
}

- (NSString *)subtitle {
    return string(held<UserMosaic>(self).subtitle());
}

- (NSString *)link {
    return string(held<UserMosaic>(self).link());
}

@end
