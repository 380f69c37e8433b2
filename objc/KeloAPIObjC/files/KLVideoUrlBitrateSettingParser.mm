#import <KeloAPIObjC/files/KLVideoUrlBitrateSettingParser.h>

#import <KeloAPIObjC/files/KLVideoUrlBitrateSetting.h>

#include <KeloAPI/files/KLVideoUrlBitrateSetting.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

#include <utility>

using namespace KeloBridge;

namespace {

/// Parsers are no objects of the library's.
class SettingParser final : public KeloAPI::Object {
public:
    explicit SettingParser(std::string identifier)
        : parser(std::move(identifier)) {}

    const KeloAPI::KLVideoUrlBitrateSettingParser parser;
};

} // namespace

@implementation KLVideoUrlBitrateSettingParser

- (instancetype)init {
    unimplemented("init()", "KeloAPI.KLVideoUrlBitrateSettingParser");
}

- (instancetype)initWithIdentifier:(NSString *)identifier {
    self = [super init];
    return self == nil ? nil : hold(self, std::make_shared<SettingParser>(text(identifier)));
}

- (NSString *)identifier {
    return string(held<SettingParser>(self).parser.identifier());
}

- (KLVideoUrlBitrateSetting *)parse:(NSDictionary *)json error:(NSError **)error {
    const auto read = document(json);
    try {
        return wrap(held<SettingParser>(self).parser.parse(*read.root().object()));
    } catch (const KeloAPI::JsonParseError &failure) {
        if (error != nullptr) {
            *error = KeloBridge::error(failure.error());
        }
        return nil;
    }
}

@end
