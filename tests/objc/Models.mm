#include "objc/Models.hpp"

#include <limits>

namespace KeloObjcTest {

NSURL *address(NSString *text) {
    return [NSURL URLWithString:text];
}

KLChannel *wholeChannel() {
    KLChannel *channel = [[[KLChannel alloc] initWithChannelId:@"12"
                                                          name:@"Cats"
                                                  fontColorHex:@"ffffff"
                                            backgroundColorHex:@"123456"] autorelease];
    channel.iconUrl = address(@"https://i.example/1");
    channel.iconRetinaUrl = address(@"https://i.example/2");
    channel.exploreIconRetinaUrl = address(@"https://i.example/3");
    channel.following = YES;
    channel.created = [NSDate dateWithTimeIntervalSince1970:1433146150.5];
    channel.channelDescription = @"All about cats";
    channel.vanityPathSuffix = @"cats";
    channel.timelineData = [[KLPagedData new] autorelease];
    channel.showRecent = YES;
    return channel;
}

KLVenueCategory *wholeCategory() {
    KLVenueCategory *category =
        [[[KLVenueCategory alloc] initWithCategoryId:@"c1" shortName:@"Coffee"] autorelease];
    category.iconUrl = address(@"https://i.example/c32.png");
    return category;
}

KLVenue *wholeVenue() {
    KLVenue *venue = [[[KLVenue alloc] initWithFoursquareVenueId:@"v1"
                                                            name:@"Caf\u00e9"] autorelease];
    venue.address = @"1 Main St";
    venue.city = @"Lisbon";
    venue.state = @"LX";
    venue.country = @"PT";
    venue.latitude = 38.7;
    venue.longitude = -9.25;
    venue.category = wholeCategory();
    return venue;
}

KLEntity *entity(NSString *identifier, NSString *type, NSString *title) {
    return [[[KLEntity alloc] initWithIdString:identifier
                                          type:type
                                         title:title
                                          link:@" | kelo://a | b"
                                         range:NSMakeRange(3, 4)] autorelease];
}

KLTag *tag(NSString *identifier, NSString *name) {
    return [[[KLTag alloc] initWithTagId:identifier name:name] autorelease];
}

SoundboardSound *sound(NSString *url, BOOL featured, NSString *sourcePostId) {
    return [[[SoundboardSound alloc] initWithName:@"Bell"
                                          soundId:@"8001"
                                         soundUrl:url
                                         featured:featured
                                     sourcePostId:sourcePostId] autorelease];
}

PostThumbnail *thumbnail() {
    return [[[PostThumbnail alloc] initWithUrl:address(@"https://cdn.example/a.jpg")
                                         width:640
                                        height:std::numeric_limits<int64_t>::max()] autorelease];
}

KLLoopData *loops(uint64_t count, double velocity) {
    return [[[KLLoopData alloc] initWithCount:[NSNumber numberWithUnsignedLongLong:count]
                                     velocity:[NSNumber numberWithDouble:velocity]] autorelease];
}

KLLoopData *wholeLoops() {
    KLLoopData *data = loops(42, 2.5);
    data.created = [NSDate dateWithTimeIntervalSince1970:1400000000.25];
    data.onFire = YES;
    return data;
}

KLPagedData *page() {
    return [[KLPagedData new] autorelease];
}

KLPostsMosaic *postsMosaic(BOOL closeable, NSInteger type, BOOL pinnable) {
    return [[[KLPostsMosaic alloc] initWithPosts:page()
                                           title:@"Dogs"
                                     description:@"of today"
                                            link:@"kelo://dogs"
                                       reference:@"r1"
                                       closeable:closeable
                                            type:static_cast<KLPostsMosaicType>(type)
                                        pinnable:pinnable] autorelease];
}

KLUserMosaic *userMosaic(id users, BOOL closeable) {
    return [[[KLUserMosaic alloc] initWithUsers:users
                                          title:@"People"
                                    description:nil
                                           link:@"kelo://near"
                                      reference:@"r2"
                                      closeable:closeable] autorelease];
}

KLVideoUploadProcessingInfo *info(NSInteger state) {
    return [[[KLVideoUploadProcessingInfo alloc]
        initWithState:static_cast<KLVideoUploadProcessingState>(state)] autorelease];
}

KLPostProcessStatus *status(NSInteger state) {
    return [[[KLPostProcessStatus alloc] initWithState:static_cast<KLPostProcessStatusState>(state)]
        autorelease];
}

KLByline *byline() {
    return [[[KLByline alloc] initWithText:@"by Zo\u00eb \U0001F602"] autorelease];
}

} // namespace KeloObjcTest
