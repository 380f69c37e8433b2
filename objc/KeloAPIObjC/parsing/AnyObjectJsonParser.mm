#import <KeloAPIObjC/parsing/AnyObjectJsonParser.h>

#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/DerivedParser.hpp>

using namespace KeloBridge;
using Parser = KeloAPI::AnyObjectJsonParser;

@implementation AnyObjectJsonParser

+ (void)load {
    add<Parser>(self);
    addDerivable(self, derivedParser);
}

- (instancetype)init {
    self = [super init];
    return self == nil ? nil : hold(self, std::make_shared<Parser>());
}

- (id)parse:(NSDictionary *)json error:(NSError **)error {
    return parsed(held<Parser>(self), json, error);
}

@end
