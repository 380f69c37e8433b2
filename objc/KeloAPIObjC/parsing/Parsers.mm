#import <KeloAPIObjC/parsing/AnyObjectJsonParser.h>
#import <KeloAPIObjC/parsing/KLEmpty.h>
#import <KeloAPIObjC/parsing/KLPagedDataParser.h>

#include <KeloAPI/model/KLEmpty.hpp>
#include <KeloAPI/model/KLPagedDataParser.hpp>
#include <KeloAPIObjC/bridge/BridgedParser.hpp>
#include <KeloAPIObjC/bridge/NativeParser.hpp>

using namespace KeloBridge;
using ItemParser = KeloAPI::AnyObjectJsonParser;
using PageParser = KeloAPI::KLPagedDataParser<ItemParser>;

@implementation AnyObjectJsonParser

KELO_STANDS_FOR(AnyObjectJsonParser, ItemParser)

- (instancetype)init {
    return adoptMade(self, [] { return std::make_shared<BridgedParser>(); });
}

- (id)parse:(NSDictionary *)json error:(NSError **)error {
    return parsed(native(self), json, error);
}

@end

@implementation KLEmpty

KELO_STANDS_FOR(KLEmpty, KeloAPI::KLEmpty)
KELO_INIT()

@end

KELO_PARSER(KLEmptyParser)

@implementation KLPagedDataParser

KELO_STANDS_FOR(KLPagedDataParser, NativeParser<PageParser>)
KELO_NO_INIT()

- (instancetype)initWithItemParser:(AnyObjectJsonParser *)itemParser {
    return adoptMade(self, [&] {
        return makeParser<PageParser>(required<ItemParser>(itemParser, @"itemParser"));
    });
}

@end
