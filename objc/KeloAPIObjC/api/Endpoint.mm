#import <KeloAPIObjC/api/Endpoint.h>

#import <KeloAPIObjC/api/Session.h>

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>
#include <KeloAPIObjC/bridge/Bytes.hpp>
#include <KeloAPIObjC/bridge/Calls.hpp>
#include <KeloAPIObjC/bridge/HostEndpoint.hpp>
#include <KeloAPIObjC/bridge/Parameters.hpp>

using namespace KeloBridge;
using Native = KeloAPI::Endpoint;
using Parser = KeloAPI::AnyObjectJsonParser;
using Encoding = KeloAPI::ParameterEncoding;

NSString *const KLAPIStatusCodeKey = @"KLAPIStatusCodeKey";
NSString *const KLCaptchaUrlKey = @"KLCaptchaUrlKey";

namespace {

/// What it does by itself where it may be that a host overrides it.
const OwnEndpoint *own(const Native &endpoint) {
    return dynamic_cast<const OwnEndpoint *>(&endpoint);
}

} // namespace

@implementation Endpoint

KELO_STANDS_FOR(Endpoint, Native)
KELO_INIT_WITH_SESSION()
KELO_NO_INIT()
KELO_COMPARES(Endpoint)
KELO_READS(NSString *, path)
KELO_READS(Session *, session)
KELO_CALLS(id<EndpointRequest>, (), requestWithTarget, requestWithCompletionHandler,
           toObjC(native(self).request(Telling{heard})))
KELO_CALLS(id<EndpointRequest>, (requestWithParser, AnyObjectJsonParser *, parser), target,
           completionHandler,
           toObjC(native(self).request(required<Parser>(parser, @"parser"), Telling{heard})))
KELO_CALLS(id<EndpointRequest>,
           (uploadWithParser, AnyObjectJsonParser *, parser, data, NSData *, data), target,
           completionHandler,
           toObjC(native(self).upload(required<Parser>(parser, @"parser"), bytes(data),
                                      Telling{heard})))
KELO_CALLS(void, (downloadWithDestinationUrl, NSURL *, destinationUrl), target, completionHandler,
           native(self).download(requiredURL(destinationUrl, @"destinationUrl"), Telling{heard}))
KELO_CALLS(void, (), setDownloadProgressTarget, setDownloadProgressHandler,
           native(self).setDownloadProgressHandler(
               tellingIfHeard<KeloAPI::Session::DownloadProgress>(heard)))

- (void)setPath:(NSString *)path {
    native(self).setPath(text(path));
}

- (NSString *)method {
    return string(KeloAPI::name(native(self).method()));
}

- (void)setMethod:(NSString *)method {
    requireArgument(method, @"method");
    native(self).setMethod(methodOf(method));
}

- (ParameterEncoding)parameterEncoding {
    const Encoding encoding = native(self).parameterEncoding();
    if (encoding == Encoding::URL) {
        return ParameterEncodingURL;
    }
    return encoding == Encoding::JSON ? ParameterEncodingJSON : ParameterEncodingCustom;
}

- (void)setParameterEncoding:(ParameterEncoding)parameterEncoding {
    if (parameterEncoding != ParameterEncodingURL && parameterEncoding != ParameterEncodingJSON) {
        [NSException raise:NSInvalidArgumentException
                    format:@"no parameter encoding: %ld", static_cast<long>(parameterEncoding)];
    }
    native(self).setParameterEncoding(parameterEncoding == ParameterEncodingURL ? Encoding::URL
                                                                                : Encoding::JSON);
}

- (NSDictionary *)parameters {
    return parameters(native(self).parameters());
}

- (void)setParameters:(NSDictionary *)given {
    native(self).setParameters(parameters(given));
}

- (NSDictionary *)headerFields {
    const Native &endpoint = native(self);
    return KeloBridge::headerFields(own(endpoint) == nullptr ? endpoint.headerFields()
                                                             : own(endpoint)->ownHeaderFields());
}

- (NSMutableURLRequest *)URLRequest {
    const Native &endpoint = native(self);
    return urlRequest(own(endpoint) == nullptr ? endpoint.URLRequest()
                                               : own(endpoint)->ownURLRequest());
}

@end
