#import <KeloAPIObjC/bridge/KLBridged.h>

@class KLChannel;

/// The paging values that a `KLPagedData` carries. A page number that is missing is 0. One thread
/// at a time.
@interface KLPagingMetadata : KLBridged

/// From the object that holds the paging keys. Never fails; a negative "count" reads as 0.
- (instancetype)initWithJson:(NSDictionary *)json;
/// A copy of another one.
- (instancetype)initWithMetadata:(KLPagingMetadata *)metadata;
/// The values of two joined pages: `previousPage`, `backAnchor` and `nextAfter` of `prepend`, all
/// but the count of `metadata`.
- (instancetype)initWithCount:(NSInteger)count
                     metadata:(KLPagingMetadata *)metadata
                      prepend:(KLPagingMetadata *)prepend;
/// Stops the process.
- (instancetype)init;

/// "count": records in the whole list. A negative one is stored as 0.
@property(nonatomic) NSInteger count;
/// "nextPage"; 0 when there is none.
@property(nonatomic, readonly) NSInteger nextPage;
/// "previousPage"; 0 when there is none.
@property(nonatomic, readonly) NSInteger previousPage;
/// "size": records in a page.
@property(nonatomic, readonly) NSInteger pageSize;
/// "anchor": the cursor of the next page; nil when there is none.
@property(nonatomic, readonly) NSString *anchor;
/// "backAnchor": the cursor of the page before; nil when there is none.
@property(nonatomic, readonly) NSString *backAnchor;
/// "title"; nil when there is none.
@property(nonatomic, readonly) NSString *title;
/// "nextAfter": the position after which the next page starts.
@property(nonatomic, readonly) NSInteger nextAfter;
/// "channel": the channel that the list belongs to, without its timeline; nil where there is none
/// or it cannot be read.
@property(nonatomic, readonly) KLChannel *channel;
/// "displayCount": the count to show to the user.
@property(nonatomic) NSInteger displayCount;

@end
