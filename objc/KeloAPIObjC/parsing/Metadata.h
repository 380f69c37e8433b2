#import <KeloAPIObjC/bridge/KLBridged.h>

/// The paging values of one list response, from which the requests for the pages beside it are
/// made. A key that is missing or of another kind leaves its default. One thread at a time.
@interface Metadata : KLBridged

/// From the object that holds the paging keys. Never fails.
- (instancetype)initWithJson:(NSDictionary *)json;

/// "count": the number of records in the whole list; 0 when missing.
@property(nonatomic, readonly) NSInteger count;
/// "nextPage": the number of the next page; nil when there is none.
@property(nonatomic, readonly) NSNumber *nextPage;
/// "previousPage": the number of the page before; nil when there is none.
@property(nonatomic, readonly) NSNumber *previousPage;
/// "size": records in a page; 0 when missing.
@property(nonatomic, readonly) NSInteger pageSize;
/// "anchor": the cursor of the next page; nil when there is none.
@property(nonatomic, readonly) NSString *anchor;
/// "backAnchor": the cursor of the page before; nil when there is none.
@property(nonatomic, readonly) NSString *backAnchor;
/// "title"; nil when there is none.
@property(nonatomic, readonly) NSString *title;
/// "nextAfter": the position after which the next page starts; 0 when missing.
@property(nonatomic, readonly) NSInteger nextAfter;
/// "displayCount": the count to show to the user; 0 when missing.
@property(nonatomic) NSInteger displayCount;

/// The parameters that ask for the next page with `size` records: "page", "anchor" and "size"; nil
/// when there is no such page.
- (NSDictionary *)nextPageParameters:(NSInteger)size;
/// The same for the page before, with "backAnchor" carrying `anchor`.
- (NSDictionary *)previousPageParameters:(NSInteger)size;

@end
