#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

#include <algorithm>
#include <string>

namespace KeloBridge {

using namespace KeloAPI;

namespace {

/// Where the authority of an address ends; at its beginning where it has none.
std::size_t endOfAuthority(const std::string &address) {
    const std::size_t slashes = address.find("//");
    const bool isThere = slashes != std::string::npos && slashes <= address.find_first_of("/?#");
    return isThere ? std::min(address.find_first_of("/?#", slashes + 2), address.size()) : 0;
}

/// GNUstep takes no query and no fragment right behind an authority.
std::string withPath(std::string address) {
    const std::size_t end = endOfAuthority(address);
    if (end > 0 && end < address.size() && address[end] != '/') {
        address.insert(end, 1, '/');
    }
    return address;
}

/// The library's reader takes no brackets behind the authority, and no second "#".
std::string escaped(const std::string &address) {
    const std::size_t end = endOfAuthority(address);
    const std::size_t fragment = address.find('#', end);
    std::string made = address.substr(0, end);
    for (std::size_t at = end; at < address.size(); ++at) {
        switch (address[at]) {
        case '[':
            made += "%5B";
            break;
        case ']':
            made += "%5D";
            break;
        case '#':
            made += at == fragment ? "#" : "%23";
            break;
        default:
            made += address[at];
        }
    }
    return made;
}

/// Nil where the Foundation refuses it.
NSURL *foundationURL(const URL &url) {
    NSURL *made = [NSURL URLWithString:string(url.absoluteString())];
    return made != nil ? made : [NSURL URLWithString:string(withPath(url.absoluteString()))];
}

} // namespace

NSURL *url(const URL &url) {
    NSURL *made = foundationURL(url);
    return made != nil ? made : [NSURL URLWithString:@""];
}

NSURL *url(const std::optional<URL> &value) {
    return value ? foundationURL(*value) : nil;
}

std::optional<URL> optionalURL(NSURL *url) {
    if (url == nil) {
        return std::nullopt;
    }
    const std::string address = text([url absoluteString]);
    if (address.empty()) {
        return URL::empty();
    }
    const auto known = URL::parse(address);
    return known ? known : URL::parse(escaped(address));
}

} // namespace KeloBridge
