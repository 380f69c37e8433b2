#import <KeloAPIObjC/model/KLVenue.h>

#import <KeloAPIObjC/model/KLVenueCategory.h>

#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVenueCategory.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Coding.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Venue = KeloAPI::KLVenue;
using VenueCategory = KeloAPI::KLVenueCategory;

static std::shared_ptr<Venue> decodedVenue(NSCoder *coder) {
    const auto venue =
        std::make_shared<Venue>(decodedText(coder, @"foursquareVenueId").value_or(""),
                                decodedText(coder, @"name").value_or(""));
    venue->address = decodedText(coder, @"address");
    venue->city = decodedText(coder, @"city");
    venue->state = decodedText(coder, @"state");
    venue->country = decodedText(coder, @"country");
    venue->latitude = [coder decodeDoubleForKey:@"latitude"];
    venue->longitude = [coder decodeDoubleForKey:@"longitude"];
    venue->category = decodedObject<VenueCategory>(coder, @"category");
    return venue;
}

@implementation KLVenue

+ (void)load {
    add<Venue>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.KLVenue");
}

- (instancetype)initWithFoursquareVenueId:(NSString *)foursquareVenueId name:(NSString *)name {
    self = [super init];
    return self == nil ? nil
                       : hold(self, std::make_shared<Venue>(text(foursquareVenueId), text(name)));
}

- (instancetype)initWithCoder:(NSCoder *)coder {
    self = [super init];
    return holdMade(self, [&] { return decodedVenue(coder); });
}

- (void)encodeWithCoder:(NSCoder *)coder {
    [coder encodeObject:self.foursquareVenueId forKey:@"foursquareVenueId"];
    [coder encodeObject:self.name forKey:@"name"];
    [coder encodeObject:self.address forKey:@"address"];
    [coder encodeObject:self.city forKey:@"city"];
    [coder encodeObject:self.state forKey:@"state"];
    [coder encodeObject:self.country forKey:@"country"];
    [coder encodeDouble:self.latitude forKey:@"latitude"];
    [coder encodeDouble:self.longitude forKey:@"longitude"];
    [coder encodeObject:self.category forKey:@"category"];
}

- (NSString *)foursquareVenueId {
    return string(held<Venue>(self).foursquareVenueId());
}

- (NSString *)name {
    return string(held<Venue>(self).name());
}

- (NSString *)address {
    return string(held<Venue>(self).address);
}

- (void)setAddress:(NSString *)address {
    held<Venue>(self).address = optionalText(address);
}

- (NSString *)city {
    return string(held<Venue>(self).city);
}

- (void)setCity:(NSString *)city {
    held<Venue>(self).city = optionalText(city);
}

- (NSString *)state {
    return string(held<Venue>(self).state);
}

- (void)setState:(NSString *)state {
    held<Venue>(self).state = optionalText(state);
}

- (NSString *)country {
    return string(held<Venue>(self).country);
}

- (void)setCountry:(NSString *)country {
    held<Venue>(self).country = optionalText(country);
}

- (double)latitude {
    return held<Venue>(self).latitude;
}

- (void)setLatitude:(double)latitude {
    held<Venue>(self).latitude = latitude;
}

- (double)longitude {
    return held<Venue>(self).longitude;
}

- (void)setLongitude:(double)longitude {
    held<Venue>(self).longitude = longitude;
}

- (KLVenueCategory *)category {
    return wrap(held<Venue>(self).category);
}

- (void)setCategory:(KLVenueCategory *)category {
    held<Venue>(self).category = shared<VenueCategory>(category);
}

@end
