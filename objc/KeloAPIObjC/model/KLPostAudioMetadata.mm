#import <KeloAPIObjC/model/KLPostAudioMetadata.h>

#include <KeloAPI/model/KLPostAudioMetadata.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using AudioMetadata = KeloAPI::KLPostAudioMetadata;

@implementation KLPostAudioMetadata

+ (void)load {
    add<AudioMetadata>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.KLPostAudioMetadata");
}

- (instancetype)initWithJson:(NSDictionary *)json {
    self = [super init];
    return holdMade(self, [&] {
        const auto read = document(json);
        return AudioMetadata::fromJSON(*read.root().object());
    });
}

- (NSString *)artistName {
    return string(held<AudioMetadata>(self).artistName);
}

- (void)setArtistName:(NSString *)artistName {
    held<AudioMetadata>(self).artistName = text(artistName);
}

- (NSString *)trackName {
    return string(held<AudioMetadata>(self).trackName);
}

- (void)setTrackName:(NSString *)trackName {
    held<AudioMetadata>(self).trackName = text(trackName);
}

- (NSString *)trackId {
    return string(held<AudioMetadata>(self).trackId);
}

- (void)setTrackId:(NSString *)trackId {
    held<AudioMetadata>(self).trackId = text(trackId);
}

- (NSNumber *)iTunesId {
    return number(held<AudioMetadata>(self).iTunesId());
}

- (NSString *)affiliateToken {
    return string(held<AudioMetadata>(self).affiliateToken());
}

- (BOOL)hasTrackTimeline {
    return held<AudioMetadata>(self).hasTrackTimeline();
}

- (NSURL *)albumArtUrl {
    return url(held<AudioMetadata>(self).albumArtUrl);
}

- (void)setAlbumArtUrl:(NSURL *)albumArtUrl {
    held<AudioMetadata>(self).albumArtUrl = optionalURL(albumArtUrl);
}

@end
