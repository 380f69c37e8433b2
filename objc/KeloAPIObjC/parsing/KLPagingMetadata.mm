#import <KeloAPIObjC/model/KLChannel.h>
#import <KeloAPIObjC/parsing/KLPagingMetadata.h>
#import <KeloAPIObjC/parsing/Metadata.h>

#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLPagingMetadata.hpp>
#include <KeloAPI/model/Metadata.hpp>
#include <KeloAPIObjC/bridge/Boxed.hpp>
#include <KeloAPIObjC/bridge/Parameters.hpp>
#include <KeloAPIObjC/bridge/Table.hpp>

using namespace KeloBridge;

static NSDictionary *known(const std::optional<KeloAPI::Parameters> &page) {
    return page ? parameters(*page) : nil;
}

@implementation KLPagingMetadata

KELO_STANDS_FOR(KLPagingMetadata, KeloAPI::KLPagingMetadata)
KELO_NO_INIT()
KELO_READS(NSInteger, count, nextPage, previousPage, pageSize, nextAfter, displayCount)
KELO_READS(NSString *, anchor, backAnchor, title)
KELO_READS(KLChannel *, channel)

- (instancetype)initWithJson:(NSDictionary *)json {
    return KELO_MAKE(*JsonOf(json));
}

- (instancetype)initWithMetadata:(KLPagingMetadata *)metadata {
    return KELO_MAKE(*required<KELO_NATIVE>(metadata, @"metadata"));
}

- (instancetype)initWithCount:(NSInteger)count
                     metadata:(KLPagingMetadata *)metadata
                      prepend:(KLPagingMetadata *)prepend {
    return KELO_MAKE(count, *required<KELO_NATIVE>(metadata, @"metadata"),
                     *required<KELO_NATIVE>(prepend, @"prepend"));
}

- (void)setCount:(NSInteger)count {
    native(self).setCount(count);
}

- (void)setDisplayCount:(NSInteger)displayCount {
    native(self).setDisplayCount(displayCount);
}

@end

@implementation Metadata

KELO_STANDS_FOR_VALUE(Metadata, KeloAPI::Metadata)
KELO_NO_INIT()
KELO_READS(NSInteger, count, pageSize, nextAfter, displayCount)
KELO_READS(NSNumber *, nextPage, previousPage)
KELO_READS(NSString *, anchor, backAnchor, title)

- (instancetype)initWithJson:(NSDictionary *)json {
    return adoptMade(self, [&] {
        return std::make_shared<Boxed<KeloAPI::Metadata>>(KeloAPI::Metadata(*JsonOf(json)));
    });
}

- (void)setDisplayCount:(NSInteger)displayCount {
    native(self).setDisplayCount(displayCount);
}

- (NSDictionary *)nextPageParameters:(NSInteger)size {
    return known(native(self).nextPageParameters(size));
}

- (NSDictionary *)previousPageParameters:(NSInteger)size {
    return known(native(self).previousPageParameters(size));
}

@end
