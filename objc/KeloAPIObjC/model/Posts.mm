#import <KeloAPIObjC/loops/KLLoopData.h>
#import <KeloAPIObjC/model/KLLike.h>
#import <KeloAPIObjC/model/KLPostAudioMetadata.h>
#import <KeloAPIObjC/model/KLPostSource.h>
#import <KeloAPIObjC/model/KLRekelo.h>
#import <KeloAPIObjC/model/KLWatchPost.h>
#import <KeloAPIObjC/model/KLWatchUser.h>
#import <KeloAPIObjC/model/PostThumbnail.h>
#import <KeloAPIObjC/model/SoundboardSound.h>

#include <KeloAPI/model/KLLike.hpp>
#include <KeloAPI/model/KLPostAudioMetadata.hpp>
#include <KeloAPI/model/KLPostSource.hpp>
#include <KeloAPI/model/KLRekelo.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPI/model/PostThumbnail.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>
#include <KeloAPIObjC/bridge/Table.hpp>

using namespace KeloBridge;

namespace {

using Sound = KeloAPI::SoundboardSound;
using Thumbnail = KeloAPI::PostThumbnail;

/// Null without an address.
std::shared_ptr<Thumbnail> decodedThumbnail(NSCoder *coder) {
    const auto address = decoded<KeloAPI::URL>(coder, @"url");
    return address ? std::make_shared<Thumbnail>(*address, [coder decodeInt64ForKey:@"width"],
                                                 [coder decodeInt64ForKey:@"height"])
                   : nullptr;
}

/// Null unless the address, the identifier and the name are there.
std::shared_ptr<Sound> decodedSound(NSCoder *coder) {
    const auto soundUrl = decoded<KeloAPI::URL>(coder, @"soundUrl");
    const auto soundId = decoded<std::string>(coder, @"soundId");
    const auto name = decoded<std::string>(coder, @"name");
    if (!soundUrl || !soundId || !name) {
        return nullptr;
    }
    return std::make_shared<Sound>(*name, *soundId, soundUrl->absoluteString(),
                                   [coder decodeBoolForKey:@"featured"] != NO,
                                   decoded<std::string>(coder, @"sourcePostId"));
}

} // namespace

@implementation KLWatchPost

KELO_STANDS_FOR(KLWatchPost, KeloAPI::KLWatchPost)
KELO_INIT()
KELO_FIELD(NSString *, postId, setPostId)
KELO_FIELD(KLWatchUser *, user, setUser)
KELO_FIELD(NSString *, caption, setCaption)
KELO_FIELD(NSDate *, created, setCreated)
KELO_FIELD(NSString *, videoUrl, setVideoUrl)
KELO_FIELD(NSString *, thumbnailUrl, setThumbnailUrl)
KELO_FIELD(NSNumber *, liked, setLiked)
KELO_FIELD(KLRekelo *, currentUserRekelo, setCurrentUserRekelo)
KELO_READS(BOOL, rekeloed)

@end

@implementation KLWatchUser

KELO_STANDS_FOR(KLWatchUser, KeloAPI::KLWatchUser)
KELO_INIT()
KELO_FIELD(NSString *, username, setUsername)
KELO_FIELD(KLLoopData *, loopData, setLoopData)

@end

@implementation KLLike

KELO_STANDS_FOR(KLLike, KeloAPI::KLLike)
KELO_INIT()
KELO_FIELD(NSString *, likeId, setLikeId)
KELO_FIELD(KLWatchUser *, user, setUser)

@end

@implementation KLRekelo

KELO_STANDS_FOR(KLRekelo, KeloAPI::KLRekelo)
KELO_INIT()
KELO_FIELD(NSString *, rekeloId, setRekeloId)
KELO_FIELD(KLWatchUser *, user, setUser)

@end

@implementation KLPostSource

KELO_STANDS_FOR(KLPostSource, KeloAPI::KLPostSource)
KELO_NO_INIT()
KELO_READS(NSString *, postId, userId, username, caption)
KELO_FIELD(NSURL *, avatarUrl, setAvatarUrl)
KELO_FIELD(NSURL *, thumbnailUrl, setThumbnailUrl)
KELO_READS(KLPostSourceContentType, contentType)

- (instancetype)initWithJSON:(NSDictionary *)json {
    return adoptMade(self, [&] { return KeloAPI::KLPostSource::fromJSON(*JsonOf(json)); });
}

@end

@implementation KLPostAudioMetadata

KELO_STANDS_FOR(KLPostAudioMetadata, KeloAPI::KLPostAudioMetadata)
KELO_NO_INIT()
KELO_FIELD(NSString *, artistName, setArtistName)
KELO_FIELD(NSString *, trackName, setTrackName)
KELO_FIELD(NSString *, trackId, setTrackId)
KELO_READS(NSNumber *, iTunesId)
KELO_READS(NSString *, affiliateToken)
KELO_READS(BOOL, hasTrackTimeline)
KELO_FIELD(NSURL *, albumArtUrl, setAlbumArtUrl)

- (instancetype)initWithJson:(NSDictionary *)json {
    return adoptMade(self, [&] { return KeloAPI::KLPostAudioMetadata::fromJSON(*JsonOf(json)); });
}

@end

@implementation PostThumbnail

KELO_STANDS_FOR(PostThumbnail, Thumbnail)
KELO_NO_INIT()
KELO_READS(NSURL *, url)
KELO_READS(int64_t, width, height)
KELO_ENCODES(url, width, height)
KELO_DECODES(decodedThumbnail(coder))

- (instancetype)initWithUrl:(NSURL *)url width:(int64_t)width height:(int64_t)height {
    return KELO_MAKE(requiredURL(url, @"url"), width, height);
}

@end

@implementation SoundboardSound

KELO_STANDS_FOR(SoundboardSound, Sound)
KELO_NO_INIT()
KELO_READS(NSString *, name, soundId, sourcePostId)
KELO_READS(NSURL *, soundUrl)
KELO_READS(BOOL, featured)
KELO_ENCODES(soundUrl, name, sourcePostId, soundId, featured)
KELO_DECODES(decodedSound(coder))

- (instancetype)initWithName:(NSString *)name
                     soundId:(NSString *)soundId
                    soundUrl:(NSString *)soundUrl
                    featured:(BOOL)featured
                sourcePostId:(NSString *)sourcePostId {
    return KELO_MAKE(text(name), text(soundId), text(soundUrl), featured != NO,
                     optionalText(sourcePostId));
}

@end
