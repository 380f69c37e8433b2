#include <KeloAPIObjC/bridge/Calls.hpp>

#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>
#include <KeloAPIObjC/bridge/Boxed.hpp>
#include <KeloAPIObjC/bridge/Bytes.hpp>
#include <KeloAPIObjC/bridge/Lists.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

namespace KeloBridge {

namespace {

using KeloAPI::AnyObjectJsonParser;
using KeloAPI::Error;
using KeloAPI::Method;

/// Takes what a parsed answer gives.
struct ParsedCompletion {
    Completion heard;

    void operator()(const std::vector<std::shared_ptr<Object>> &items,
                    const std::optional<KeloAPI::Metadata> &metadata,
                    const KeloAPI::Timeline &timeline, const std::optional<Error> &failure) const {
        const Pool pool;
        heard(array(items), metadata ? wrapValue(*metadata) : nil, wrapValue(timeline),
              error(failure));
    }
};

} // namespace

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

std::function<void(std::optional<Error> failure)> errorCompletion(const Completion &heard) {
    return [heard](const std::optional<Error> &failure) {
        const Pool pool;
        heard(error(failure));
    };
}

NativeEndpoint::TextCompletion textCompletion(const Completion &heard) {
    return [heard](const std::optional<std::string> &answer, const std::optional<Error> &failure) {
        const Pool pool;
        heard(string(answer), error(failure));
    };
}

NativeEndpoint::DownloadCompletion downloadCompletion(const Completion &heard) {
    return [heard](const KeloAPI::URL &file, const std::optional<Error> &failure) {
        const Pool pool;
        heard(url(file), error(failure));
    };
}

KeloAPI::Session::DownloadProgress downloadProgress(const Completion &heard) {
    if (!heard) {
        return nullptr;
    }
    return [heard](std::int64_t bytesMoved, std::int64_t total, std::int64_t expected) {
        const Pool pool;
        heard(bytesMoved, total, expected);
    };
}

std::shared_ptr<KeloAPI::EndpointRequest> sendParsed(NativeEndpoint &endpoint, id parser,
                                                     const Completion &heard) {
    return endpoint.request(shared<AnyObjectJsonParser>(parser), ParsedCompletion{heard});
}

std::shared_ptr<KeloAPI::EndpointRequest> uploadParsed(NativeEndpoint &endpoint, id parser,
                                                       NSData *data, const Completion &heard) {
    return endpoint.upload(shared<AnyObjectJsonParser>(parser), bytes(data),
                           ParsedCompletion{heard});
}

} // namespace KeloBridge
