#import <KeloAPIObjC/parsing/KLPagingMetadata.h>

#import <KeloAPIObjC/model/KLChannel.h>

#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLPagingMetadata.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Metadata = KeloAPI::KLPagingMetadata;

@implementation KLPagingMetadata

+ (void)load {
    add<Metadata>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.KLPagingMetadata");
}

- (instancetype)initWithJson:(NSDictionary *)json {
    self = [super init];
    return holdMade(self, [&] {
        const auto read = document(json);
        return std::make_shared<Metadata>(*read.root().object());
    });
}

- (instancetype)initWithMetadata:(KLPagingMetadata *)metadata {
    self = [super init];
    return holdMade(self, [&] { return std::make_shared<Metadata>(held<Metadata>(metadata)); });
}

- (instancetype)initWithCount:(NSInteger)count
                     metadata:(KLPagingMetadata *)metadata
                      prepend:(KLPagingMetadata *)prepend {
    self = [super init];
    return holdMade(self, [&] {
        return std::make_shared<Metadata>(count, held<Metadata>(metadata), held<Metadata>(prepend));
    });
}

- (NSInteger)count {
    return held<Metadata>(self).count();
}

- (void)setCount:(NSInteger)count {
    held<Metadata>(self).setCount(count);
}

- (NSInteger)nextPage {
    return held<Metadata>(self).nextPage();
}

- (NSInteger)previousPage {
    return held<Metadata>(self).previousPage();
}

- (NSInteger)pageSize {
    return held<Metadata>(self).pageSize();
}

- (NSString *)anchor {
    return string(held<Metadata>(self).anchor());
}

- (NSString *)backAnchor {
    return string(held<Metadata>(self).backAnchor());
}

- (NSString *)title {
    return string(held<Metadata>(self).title());
}

- (NSInteger)nextAfter {
    return held<Metadata>(self).nextAfter();
}

- (KLChannel *)channel {
    return wrap(held<Metadata>(self).channel());
}

- (NSInteger)displayCount {
    return held<Metadata>(self).displayCount();
}

- (void)setDisplayCount:(NSInteger)displayCount {
    held<Metadata>(self).setDisplayCount(displayCount);
}

@end
