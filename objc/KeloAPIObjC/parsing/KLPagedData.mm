#import <KeloAPIObjC/parsing/KLPagedData.h>

#import <KeloAPIObjC/parsing/KLPagingMetadata.h>

#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPIObjC/bridge/Table.hpp>

#include <algorithm>

using namespace KeloBridge;
using PagedData = KeloAPI::KLPagedData;
using PagingMetadata = KeloAPI::KLPagingMetadata;

@implementation KLPagedData

KELO_STANDS_FOR(KLPagedData, PagedData)
KELO_INIT()
KELO_READS(KLPagingMetadata *, metadata)
KELO_READS(NSArray *, data)
KELO_READS(NSInteger, count, startIndex, endIndex)
KELO_READS(BOOL, hasNextPage)

- (instancetype)initWithData:(NSArray *)data {
    return KELO_MAKE(objects<Object>(data));
}

- (instancetype)initWithData:(NSArray *)data metadata:(KLPagingMetadata *)metadata {
    return KELO_MAKE(objects<Object>(data), required<PagingMetadata>(metadata, @"metadata"));
}

- (void)dealloc {
    [_enumerated release];
    [super dealloc];
}

- (id)copyWithZone:(NSZone *)zone {
    return adopt([[self class] allocWithZone:zone], native(self).copy());
}

- (void)setMetadata:(KLPagingMetadata *)metadata {
    native(self).setMetadata(required<PagingMetadata>(metadata, @"metadata"));
}

- (void)setData:(NSArray *)data {
    native(self).setData(objects<Object>(data));
}

- (id)objectAtIndexedSubscript:(NSInteger)index {
    return toObjC(native(self)[index]);
}

- (void)setObject:(id)object atIndexedSubscript:(NSInteger)index {
    native(self)[index] = required<Object>(object, @"object");
}

- (id)objectAtIndex:(NSInteger)index {
    return toObjC(native(self).objectAtIndex(index));
}

- (void)append:(id)object {
    native(self).append(required<Object>(object, @"object"));
}

- (void)addObject:(id)object {
    native(self).addObject(required<Object>(object, @"object"));
}

- (void)insert:(id)object atIndex:(NSInteger)index {
    native(self).insert(required<Object>(object, @"object"), index);
}

- (void)insertObject:(id)object atIndex:(NSInteger)index {
    native(self).insertObject(required<Object>(object, @"object"), index);
}

- (id)removeAtIndex:(NSInteger)index {
    return toObjC(native(self).removeAtIndex(index));
}

- (id)removeObjectAtIndex:(NSInteger)index {
    return toObjC(native(self).removeObjectAtIndex(index));
}

- (BOOL)remove:(id)object {
    return native(self).remove(toNative(object));
}

- (BOOL)removeObject:(id)object {
    return native(self).removeObject(toNative(object));
}

- (void)addPagedData:(KLPagedData *)other {
    native(self).addPagedData(toNative<PagedData>(other));
}

- (void)appendPagedData:(KLPagedData *)other {
    native(self).appendPagedData(*required<PagedData>(other, @"other"));
}

- (void)prependPagedData:(KLPagedData *)other {
    native(self).prependPagedData(*required<PagedData>(other, @"other"));
}

- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState *)state
                                  objects:(id *)buffer
                                    count:(NSUInteger)length {
    // The place of its state tells an enumeration from others that are under way.
    NSValue *enumeration = [NSValue valueWithPointer:state];
    if (state->state == 0) {
        if (_enumerated == nil) {
            _enumerated = [NSMutableDictionary new];
        }
        [_enumerated setObject:self.data forKey:enumeration];
    }
    NSArray *list = [_enumerated objectForKey:enumeration];
    const NSUInteger given = std::min<NSUInteger>(length, [list count] - state->state);
    [list getObjects:buffer range:NSMakeRange(state->state, given)];
    state->state += given;
    state->itemsPtr = buffer;
    state->mutationsPtr = &state->extra[0]; // that list never changes
    if (given == 0) {
        [_enumerated removeObjectForKey:enumeration];
    }
    return given;
}

@end
