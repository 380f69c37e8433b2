#import <KeloAPIObjC/model/KLChannel.h>
#import <KeloAPIObjC/model/KLVenue.h>
#import <KeloAPIObjC/model/KLVenueCategory.h>
#import <KeloAPIObjC/parsing/KLPagedData.h>

#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVenueCategory.hpp>
#include <KeloAPIObjC/bridge/Table.hpp>

using namespace KeloBridge;

@implementation KLChannel

KELO_STANDS_FOR(KLChannel, KeloAPI::KLChannel)
KELO_INIT()
KELO_FIELD(NSString *, channelId, setChannelId)
KELO_FIELD(NSString *, name, setName)
KELO_FIELD(NSString *, fontColorHex, setFontColorHex)
KELO_FIELD(NSString *, backgroundColorHex, setBackgroundColorHex)
KELO_FIELD(NSURL *, iconUrl, setIconUrl)
KELO_FIELD(NSURL *, iconRetinaUrl, setIconRetinaUrl)
KELO_FIELD(NSURL *, exploreIconRetinaUrl, setExploreIconRetinaUrl)
KELO_FIELD(BOOL, following, setFollowing)
KELO_FIELD(NSDate *, created, setCreated)
KELO_FIELD(NSString *, channelDescription, setChannelDescription)
KELO_FIELD(NSString *, vanityPathSuffix, setVanityPathSuffix)
KELO_FIELD(KLPagedData *, timelineData, setTimelineData)
KELO_FIELD(BOOL, showRecent, setShowRecent)
KELO_COMPARES(KLChannel)
KELO_ENCODES(channelId, name, created, iconUrl, iconRetinaUrl, fontColorHex, backgroundColorHex,
             channelDescription)
KELO_DECODES(std::make_shared<KeloAPI::KLChannel>(), channelId, name, created, iconUrl,
             iconRetinaUrl, fontColorHex, backgroundColorHex, channelDescription)

- (instancetype)initWithChannelId:(NSString *)channelId
                             name:(NSString *)name
                     fontColorHex:(NSString *)fontColorHex
               backgroundColorHex:(NSString *)backgroundColorHex {
    return KELO_MAKE(text(channelId), text(name), text(fontColorHex), text(backgroundColorHex));
}

@end

@implementation KLVenue

KELO_STANDS_FOR(KLVenue, KeloAPI::KLVenue)
KELO_NO_INIT()
KELO_READS(NSString *, foursquareVenueId, name)
KELO_FIELD(NSString *, address, setAddress)
KELO_FIELD(NSString *, city, setCity)
KELO_FIELD(NSString *, state, setState)
KELO_FIELD(NSString *, country, setCountry)
KELO_FIELD(double, latitude, setLatitude)
KELO_FIELD(double, longitude, setLongitude)
KELO_FIELD(KLVenueCategory *, category, setCategory)
KELO_ENCODES(foursquareVenueId, name, address, city, state, country, latitude, longitude, category)
KELO_DECODES(std::make_shared<KeloAPI::KLVenue>(
                 decoded<std::string>(coder, @"foursquareVenueId").value_or(""),
                 decoded<std::string>(coder, @"name").value_or("")),
             address, city, state, country, latitude, longitude, category)

- (instancetype)initWithFoursquareVenueId:(NSString *)foursquareVenueId name:(NSString *)name {
    return KELO_MAKE(text(foursquareVenueId), text(name));
}

@end

@implementation KLVenueCategory

KELO_STANDS_FOR(KLVenueCategory, KeloAPI::KLVenueCategory)
KELO_NO_INIT()
KELO_READS(NSString *, categoryId, shortName)
KELO_FIELD(NSURL *, iconUrl, setIconUrl)
KELO_ENCODES(categoryId, shortName, iconUrl)
KELO_DECODES(std::make_shared<KeloAPI::KLVenueCategory>(
                 decoded<std::string>(coder, @"categoryId").value_or(""),
                 decoded<std::string>(coder, @"shortName").value_or("")),
             iconUrl)

- (instancetype)initWithCategoryId:(NSString *)categoryId shortName:(NSString *)shortName {
    return KELO_MAKE(text(categoryId), text(shortName));
}

@end
