#import <KeloAPIObjC/model/ModelParsers.h>

#import <KeloAPIObjC/parsing/KLPagedDataParser.h>

#include <KeloAPI/model/KLByline.hpp>
#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPI/model/KLLike.hpp>
#include <KeloAPI/model/KLRekelo.hpp>
#include <KeloAPI/model/KLSolicitation.hpp>
#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPI/model/KLUrlAction.hpp>
#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>
#include <KeloAPI/model/KLPagedDataParser.hpp>
#include <KeloAPIObjC/bridge/NativeParser.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;

using ChannelParser = KeloAPI::KLChannelParser;

static std::shared_ptr<NativeParser<ChannelParser>>
channelParser(KLPagedDataParser *timelineParser) {
    using Timeline = NativeParser<ChannelParser::TimelineParser>;
    const auto timeline = sharedAlone<Timeline>(timelineParser);
    return std::make_shared<NativeParser<ChannelParser>>(
        std::make_shared<const ChannelParser>(timeline == nullptr ? nullptr : timeline->parser()));
}

@implementation KLTagParser

+ (void)load {
    addParser<KeloAPI::KLTagParser>(self);
}

- (instancetype)init {
    return holdParser<KeloAPI::KLTagParser>(self);
}

@end

@implementation KLBylineParser

+ (void)load {
    addParser<KeloAPI::KLBylineParser>(self);
}

- (instancetype)init {
    return holdParser<KeloAPI::KLBylineParser>(self);
}

@end

@implementation KLVenueParser

+ (void)load {
    addParser<KeloAPI::KLVenueParser>(self);
}

- (instancetype)init {
    return holdParser<KeloAPI::KLVenueParser>(self);
}

@end

@implementation KLFoursquareVenueParser

+ (void)load {
    addParser<KeloAPI::KLFoursquareVenueParser>(self);
}

- (instancetype)init {
    return holdParser<KeloAPI::KLFoursquareVenueParser>(self);
}

@end

@implementation KLUrlActionParser

+ (void)load {
    addParser<KeloAPI::KLUrlActionParser>(self);
}

- (instancetype)init {
    return holdParser<KeloAPI::KLUrlActionParser>(self);
}

@end

@implementation KLSolicitationParser

+ (void)load {
    addParser<KeloAPI::KLSolicitationParser>(self);
}

- (instancetype)init {
    return holdParser<KeloAPI::KLSolicitationParser>(self);
}

@end

@implementation SoundboardSoundParser

+ (void)load {
    addParser<KeloAPI::SoundboardSoundParser>(self);
}

- (instancetype)init {
    return holdParser<KeloAPI::SoundboardSoundParser>(self);
}

@end

@implementation PostParser

+ (void)load {
    addParser<KeloAPI::PostParser>(self);
}

- (instancetype)init {
    return holdParser<KeloAPI::PostParser>(self);
}

@end

@implementation UserParser

+ (void)load {
    addParser<KeloAPI::UserParser>(self);
}

- (instancetype)init {
    return holdParser<KeloAPI::UserParser>(self);
}

@end

@implementation LikeParser

+ (void)load {
    addParser<KeloAPI::LikeParser>(self);
}

- (instancetype)init {
    return holdParser<KeloAPI::LikeParser>(self);
}

@end

@implementation RekeloParser

+ (void)load {
    addParser<KeloAPI::RekeloParser>(self);
}

- (instancetype)init {
    return holdParser<KeloAPI::RekeloParser>(self);
}

@end

@implementation KLEntityParser

+ (void)load {
    addParser<KeloAPI::KLEntityParser>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.KLEntityParser");
}

- (instancetype)initWithText:(NSString *)text {
    return holdParser<KeloAPI::KLEntityParser>(self, KeloBridge::text(text));
}

@end

@implementation KLChannelParser

+ (void)load {
    addParser<ChannelParser>(self);
}

- (instancetype)init {
    return holdParser<ChannelParser>(self);
}

- (instancetype)initWithTimelineParser:(KLPagedDataParser *)timelineParser {
    return holdMade(self, [&] { return channelParser(timelineParser); });
}

@end
