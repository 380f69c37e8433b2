#import <KeloAPIObjC/parsing/KLPagedDataParser.h>

#include <KeloAPI/model/KLPagedDataParser.hpp>
#include <KeloAPIObjC/bridge/NativeParser.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>

using namespace KeloBridge;
using ItemParser = KeloAPI::AnyObjectJsonParser;
using PagedDataParser = KeloAPI::KLPagedDataParser<ItemParser>;

@implementation KLPagedDataParser

+ (void)load {
    addParser<PagedDataParser>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.KLPagedDataParser");
}

- (instancetype)initWithItemParser:(AnyObjectJsonParser *)itemParser {
    return holdMade(self, [&] {
        return std::make_shared<NativeParser<PagedDataParser>>(
            std::make_shared<const PagedDataParser>(shared<ItemParser>(itemParser)));
    });
}

@end
