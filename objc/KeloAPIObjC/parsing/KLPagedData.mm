#import <KeloAPIObjC/parsing/KLPagedData.h>

#import <KeloAPIObjC/parsing/KLPagingMetadata.h>

#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Lists.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>

#include <algorithm>

using namespace KeloBridge;
using PagedData = KeloAPI::KLPagedData;
using PagingMetadata = KeloAPI::KLPagingMetadata;

namespace {

PagedData::Element element(id object) {
    auto crossed = shared(object);
    if (crossed == nullptr) {
        raiseWrongClass(object);
    }
    return crossed;
}

/// Where an enumeration keeps the list that it goes over.
NSArray *&enumerated(NSFastEnumerationState &state) {
    return *reinterpret_cast<NSArray **>(&state.extra[0]);
}

} // namespace

@implementation KLPagedData

+ (void)load {
    add<PagedData>(self);
}

- (instancetype)init {
    self = [super init];
    return self == nil ? nil : hold(self, std::make_shared<PagedData>());
}

- (instancetype)initWithData:(NSArray *)data {
    self = [super init];
    return holdMade(self, [&] { return std::make_shared<PagedData>(objects<Object>(data)); });
}

- (instancetype)initWithData:(NSArray *)data metadata:(KLPagingMetadata *)metadata {
    self = [super init];
    return holdMade(self, [&] {
        return std::make_shared<PagedData>(objects<Object>(data), shared<PagingMetadata>(metadata));
    });
}

- (id)copyWithZone:(NSZone *)zone {
    return hold([[self class] allocWithZone:zone], held<PagedData>(self).copy());
}

- (KLPagingMetadata *)metadata {
    return wrap(held<PagedData>(self).metadata());
}

- (void)setMetadata:(KLPagingMetadata *)metadata {
    held<PagedData>(self).setMetadata(shared<PagingMetadata>(metadata));
}

- (NSArray *)data {
    return array(held<PagedData>(self).data());
}

- (void)setData:(NSArray *)data {
    held<PagedData>(self).setData(objects<Object>(data));
}

- (NSInteger)count {
    return held<PagedData>(self).count();
}

- (NSInteger)startIndex {
    return held<PagedData>(self).startIndex();
}

- (NSInteger)endIndex {
    return held<PagedData>(self).endIndex();
}

- (BOOL)hasNextPage {
    return held<PagedData>(self).hasNextPage();
}

- (id)objectAtIndexedSubscript:(NSInteger)index {
    return wrap(held<PagedData>(self)[index]);
}

- (void)setObject:(id)object atIndexedSubscript:(NSInteger)index {
    held<PagedData>(self)[index] = element(object);
}

- (id)objectAtIndex:(NSInteger)index {
    return wrap(held<PagedData>(self).objectAtIndex(index));
}

- (void)append:(id)object {
    held<PagedData>(self).append(element(object));
}

- (void)addObject:(id)object {
    held<PagedData>(self).addObject(element(object));
}

- (void)insert:(id)object atIndex:(NSInteger)index {
    held<PagedData>(self).insert(element(object), index);
}

- (void)insertObject:(id)object atIndex:(NSInteger)index {
    held<PagedData>(self).insertObject(element(object), index);
}

- (id)removeAtIndex:(NSInteger)index {
    return wrap(held<PagedData>(self).removeAtIndex(index));
}

- (id)removeObjectAtIndex:(NSInteger)index {
    return wrap(held<PagedData>(self).removeObjectAtIndex(index));
}

- (BOOL)remove:(id)object {
    return held<PagedData>(self).remove(shared(object));
}

- (BOOL)removeObject:(id)object {
    return held<PagedData>(self).removeObject(shared(object));
}

- (void)addPagedData:(KLPagedData *)other {
    held<PagedData>(self).addPagedData(shared<PagedData>(other));
}

- (void)appendPagedData:(KLPagedData *)other {
    held<PagedData>(self).appendPagedData(held<PagedData>(other));
}

- (void)prependPagedData:(KLPagedData *)other {
    held<PagedData>(self).prependPagedData(held<PagedData>(other));
}

- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState *)state
                                  objects:(id *)buffer
                                    count:(NSUInteger)length {
    if (state->state == 0) {
        enumerated(*state) = self.data;
    }
    NSArray *list = enumerated(*state);
    const NSUInteger given = std::min<NSUInteger>(length, [list count] - state->state);
    [list getObjects:buffer range:NSMakeRange(state->state, given)];
    state->state += given;
    state->itemsPtr = buffer;
    state->mutationsPtr = &state->extra[1]; // that list never changes
    return given;
}

@end
