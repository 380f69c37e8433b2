#import <KeloAPIObjC/bridge/KLBridged.h>

@class KLVenueCategory;

/// The place at which a post was made. Archives every property under its own name; of those that an
/// archive lacks, the identifier and the name are empty texts, the coordinates 0 and the rest nil.
/// One thread at a time.
@interface KLVenue : KLBridged <NSCoding>

/// A place of which nothing else is known.
- (instancetype)initWithFoursquareVenueId:(NSString *)foursquareVenueId name:(NSString *)name;
/// Stops the process.
- (instancetype)init;

@property(nonatomic, readonly) NSString *foursquareVenueId;
@property(nonatomic, readonly) NSString *name;
/// Nil where they are not known.
@property(nonatomic, copy) NSString *address;
@property(nonatomic, copy) NSString *city;
@property(nonatomic, copy) NSString *state;
@property(nonatomic, copy) NSString *country;
/// In degrees; 0 where they are not known.
@property(nonatomic) double latitude;
@property(nonatomic) double longitude;
/// Nil where it is not known.
@property(nonatomic, retain) KLVenueCategory *category;

@end
