#include <KeloAPIObjC/bridge/HostEndpoint.hpp>

#include <KeloAPIObjC/bridge/Bytes.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

#include <cmath>

namespace KeloBridge {

using KeloAPI::Method;

Method methodOf(NSString *known) {
    for (const Method method :
         {Method::OPTIONS, Method::GET, Method::HEAD, Method::POST, Method::PUT, Method::PATCH,
          Method::DELETE, Method::TRACE, Method::CONNECT}) {
        if (known != nil && text(known) == name(method)) {
            return method;
        }
    }
    [NSException raise:NSInvalidArgumentException format:@"no HTTP method: %@", known];
    __builtin_unreachable();
}

KeloAPI::HeaderFields headerFields(NSDictionary *fields) {
    KeloAPI::HeaderFields made;
    NSArray *names = [fields allKeys];
    for (NSUInteger i = 0; i < [names count]; ++i) {
        id name = [names objectAtIndex:i];
        made.insert_or_assign(text([name description]),
                              text([[fields objectForKey:name] description]));
    }
    return made;
}

NSDictionary *headerFields(const KeloAPI::HeaderFields &fields) {
    NSMutableDictionary *made = [NSMutableDictionary dictionary];
    for (const auto &[name, content] : fields) {
        [made setObject:string(content) forKey:string(name)];
    }
    return made;
}

NSMutableURLRequest *urlRequest(const KeloAPI::URLRequest &request) {
    NSMutableURLRequest *made = [NSMutableURLRequest requestWithURL:url(request.url)];
    [made setHTTPMethod:string(KeloAPI::name(request.method))];
    [made setAllHTTPHeaderFields:headerFields(request.headerFields)];
    [made setHTTPBody:request.body ? bytes(*request.body) : nil];
    [made setTimeoutInterval:std::chrono::duration<double>(request.timeoutInterval).count()];
    return made;
}

KeloAPI::URLRequest urlRequest(KeloAPI::URLRequest request, NSURLRequest *changed) {
    request.url = optionalURL([changed URL]);
    request.method = methodOf([changed HTTPMethod]);
    request.headerFields = headerFields([changed allHTTPHeaderFields]);
    request.body =
        [changed HTTPBody] == nil ? std::nullopt : std::optional(bytes([changed HTTPBody]));
    request.timeoutInterval =
        std::chrono::milliseconds(std::llround([changed timeoutInterval] * 1000));
    return request;
}

OwnEndpoint::~OwnEndpoint() = default;

} // namespace KeloBridge
