#import <KeloAPIObjC/parsing/Metadata.h>

#include <KeloAPI/model/Metadata.hpp>
#include <KeloAPIObjC/bridge/Boxed.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Parameters.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Native = KeloAPI::Metadata;

static NSDictionary *known(const std::optional<KeloAPI::Parameters> &page) {
    return page ? parameters(*page) : nil;
}

@implementation Metadata

+ (void)load {
    add<Boxed<Native>>(self);
}

- (instancetype)initWithJson:(NSDictionary *)json {
    self = [super init];
    return holdMade(self, [&] {
        const auto read = document(json);
        return std::make_shared<Boxed<Native>>(Native(*read.root().object()));
    });
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.Metadata");
}

- (NSInteger)count {
    return heldValue<Native>(self).count();
}

- (NSNumber *)nextPage {
    return number(heldValue<Native>(self).nextPage());
}

- (NSNumber *)previousPage {
    return number(heldValue<Native>(self).previousPage());
}

- (NSInteger)pageSize {
    return heldValue<Native>(self).pageSize();
}

- (NSString *)anchor {
    return string(heldValue<Native>(self).anchor());
}

- (NSString *)backAnchor {
    return string(heldValue<Native>(self).backAnchor());
}

- (NSString *)title {
    return string(heldValue<Native>(self).title());
}

- (NSInteger)nextAfter {
    return heldValue<Native>(self).nextAfter();
}

- (NSInteger)displayCount {
    return heldValue<Native>(self).displayCount();
}

- (void)setDisplayCount:(NSInteger)displayCount {
    heldValue<Native>(self).setDisplayCount(displayCount);
}

- (NSDictionary *)nextPageParameters:(NSInteger)size {
    return known(heldValue<Native>(self).nextPageParameters(size));
}

- (NSDictionary *)previousPageParameters:(NSInteger)size {
    return known(heldValue<Native>(self).previousPageParameters(size));
}

@end
