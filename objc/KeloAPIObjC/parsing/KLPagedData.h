#import <KeloAPIObjC/bridge/KLBridged.h>

@class KLPagingMetadata;

/// A list of model objects that grows page by page, with the paging values of what has been loaded
/// so far. Inserting and removing single elements moves `metadata.count` along; assigning `data`
/// does not. Elements may be objects of any class, which come back as the objects they are; nil for
/// one raises `NSInvalidArgumentException`. A copy is of the same class. One thread at a time.
///
/// Fast enumeration goes over the elements that there are when it begins, and keeps them until it
/// has ended. Those of a loop that is left early are kept until the same loop begins anew, or the
/// list goes.
@interface KLPagedData : KLBridged <NSCopying, NSFastEnumeration> {
@private
    NSMutableDictionary *_enumerated;
}

/// An empty list.
- (instancetype)init;
/// A list whose metadata has the number of elements as its count and nothing else.
- (instancetype)initWithData:(NSArray *)data;
/// Nil for metadata raises `NSInvalidArgumentException`.
- (instancetype)initWithData:(NSArray *)data metadata:(KLPagingMetadata *)metadata;

/// Nil raises `NSInvalidArgumentException`.
@property(nonatomic, retain) KLPagingMetadata *metadata;
@property(nonatomic, copy) NSArray *data;

/// The number of elements.
@property(nonatomic, readonly) NSInteger count;
/// 0.
@property(nonatomic, readonly) NSInteger startIndex;
/// The number of elements.
@property(nonatomic, readonly) NSInteger endIndex;
/// Whether the metadata names a next page above 0. Anchors play no part.
@property(nonatomic, readonly) BOOL hasNextPage;

/// An element, to read or to replace. An index outside the list stops the process.
- (id)objectAtIndexedSubscript:(NSInteger)index;
- (void)setObject:(id)object atIndexedSubscript:(NSInteger)index;
- (id)objectAtIndex:(NSInteger)index;

/// Adds behind the last element.
- (void)append:(id)object;
- (void)addObject:(id)object;
/// Adds before the element at `index`, or at the end. An index that is neither stops the process.
- (void)insert:(id)object atIndex:(NSInteger)index;
- (void)insertObject:(id)object atIndex:(NSInteger)index;
/// Takes an element out and returns it. An index outside the list stops the process.
- (id)removeAtIndex:(NSInteger)index;
- (id)removeObjectAtIndex:(NSInteger)index;
/// Takes the first element out that is this very object; NO when there is none.
- (BOOL)remove:(id)object;
- (BOOL)removeObject:(id)object;

/// Adds an older page behind the list; nil does nothing.
- (void)addPagedData:(KLPagedData *)other;
/// Adds an older page behind the list, whose metadata (the same object) becomes this list's.
- (void)appendPagedData:(KLPagedData *)other;
/// Adds newer records before the list. The metadata is made anew: the list's own, with the new
/// number of elements as its count and the other page's values for the way back.
- (void)prependPagedData:(KLPagedData *)other;

@end

/// `alloc` with its type, by which a compiler tells `initWithData:` from that of other classes.
@interface KLPagedData (Typed)
+ (KLPagedData *)alloc;
@end
