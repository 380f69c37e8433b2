#import <KeloAPIObjC/model/KLSolicitation.h>

#include <KeloAPI/model/KLSolicitation.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Solicitation = KeloAPI::KLSolicitation;

namespace {

constexpr const char *className = "KeloAPI.KLSolicitation";

} // namespace

@implementation KLSolicitation

+ (void)load {
    add<Solicitation>(self);
}

- (instancetype)init {
    unimplemented("init()", className);
}

- (instancetype)initWithReference:(NSString *)reference closeable:(BOOL)closeable {
    unimplemented("init(reference:closeable:)", className);
}

- (instancetype)initWithReference:(NSString *)reference
                        closeable:(NSNumber *)closeable
                     closeUrlPath:(NSString *)closeUrlPath {
    return hold(self, std::make_shared<Solicitation>(text(reference), optionalBool(closeable),
                                                     optionalText(closeUrlPath)));
}

- (NSString *)closeUrlPath {
    return string(held<Solicitation>(self).closeUrlPath());
}

@end
