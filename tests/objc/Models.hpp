#pragma once

#import <KeloAPIObjC/KeloAPIObjC.h>

#include <KeloAPIObjC/bridge/Bridge.hpp>

#include <memory>
#include <utility>

/// Objects of the models that several tests make, autoreleased.
namespace KeloObjcTest {

NSURL *address(NSString *text);
/// With every property that an initialiser does not set.
KLChannel *wholeChannel();
KLVenue *wholeVenue();
KLVenueCategory *wholeCategory();
KLEntity *entity(NSString *identifier, NSString *type, NSString *title);
KLTag *tag(NSString *identifier, NSString *name);
SoundboardSound *sound(NSString *url, BOOL featured, NSString *sourcePostId);
PostThumbnail *thumbnail();
KLLoopData *loops(uint64_t count, double velocity);
KLLoopData *wholeLoops();
KLPagedData *page();
KLPostsMosaic *postsMosaic(BOOL closeable, NSInteger type, BOOL pinnable);
KLUserMosaic *userMosaic(id users, BOOL closeable);
KLVideoUploadProcessingInfo *info(NSInteger state);
KLPostProcessStatus *status(NSInteger state);
KLByline *byline();

/// What stands for a new object of the library's own.
template <class T, class... Arguments>
id parsed(Arguments &&...arguments) {
    return KeloBridge::toObjC(std::make_shared<T>(std::forward<Arguments>(arguments)...));
}

/// Their properties.
constexpr const char *channelKeys =
    "channelId name fontColorHex backgroundColorHex iconUrl iconRetinaUrl exploreIconRetinaUrl "
    "following created channelDescription vanityPathSuffix timelineData showRecent";
constexpr const char *venueKeys =
    "foursquareVenueId name address city state country latitude longitude category";
constexpr const char *categoryKeys = "categoryId shortName iconUrl";
constexpr const char *entityKeys = "idString type title link applicationLink range";
constexpr const char *tagKeys = "tagId name nameWithoutHash count";
constexpr const char *soundKeys = "name soundId soundUrl featured sourcePostId";
constexpr const char *thumbnailKeys = "url width height";
constexpr const char *loopKeys = "count velocity created onFire";

} // namespace KeloObjcTest
