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
    // One of a derived class holds nothing: what stands for it keeps it alive, not the other way
    // round.
    return [self isMemberOfClass:[AnyObjectJsonParser class]]
               ? hold(self, std::make_shared<Parser>())
               : self;
}

- (id)parse:(NSDictionary *)json error:(NSError **)error {
    return [self isMemberOfClass:[AnyObjectJsonParser class]]
               ? parsed(held<Parser>(self), json, error)
               : parsed(Parser(), json, error);
}

@end
