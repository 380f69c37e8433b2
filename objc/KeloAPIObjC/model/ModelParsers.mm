#import <KeloAPIObjC/model/ModelParsers.h>

#import <KeloAPIObjC/parsing/KLPagedDataParser.h>

#include <KeloAPI/model/KLByline.hpp>
#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPI/model/KLLike.hpp>
#include <KeloAPI/model/KLPagedDataParser.hpp>
#include <KeloAPI/model/KLRekelo.hpp>
#include <KeloAPI/model/KLSolicitation.hpp>
#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPI/model/KLUrlAction.hpp>
#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>
#include <KeloAPIObjC/bridge/NativeParser.hpp>
#include <KeloAPIObjC/bridge/Table.hpp>

using namespace KeloBridge;

static auto channelParser(KLPagedDataParser *timelineParser) {
    using ChannelParser = KeloAPI::KLChannelParser;
    using Timeline = NativeParser<ChannelParser::TimelineParser>;
    const auto timeline = toNative<Timeline>(timelineParser);
    return makeParser<ChannelParser>(timeline == nullptr ? nullptr : timeline->parser());
}

KELO_PARSER(KLTagParser)
KELO_PARSER(KLBylineParser)
KELO_PARSER(KLVenueParser)
KELO_PARSER(KLFoursquareVenueParser)
KELO_PARSER(KLUrlActionParser)
KELO_PARSER(KLSolicitationParser)
KELO_PARSER(SoundboardSoundParser)
KELO_PARSER(PostParser)
KELO_PARSER(UserParser)
KELO_PARSER(LikeParser)
KELO_PARSER(RekeloParser)

@implementation KLEntityParser

KELO_STANDS_FOR(KLEntityParser, NativeParser<KeloAPI::KLEntityParser>)
KELO_NO_INIT()

- (instancetype)initWithText:(NSString *)text {
    return adoptMade(self,
                     [&] { return makeParser<KeloAPI::KLEntityParser>(KeloBridge::text(text)); });
}

@end

@implementation KLChannelParser

KELO_STANDS_FOR(KLChannelParser, NativeParser<KeloAPI::KLChannelParser>)

- (instancetype)init {
    return adoptMade(self, [] { return channelParser(nil); });
}

- (instancetype)initWithTimelineParser:(KLPagedDataParser *)timelineParser {
    return adoptMade(self, [&] { return channelParser(timelineParser); });
}

@end
