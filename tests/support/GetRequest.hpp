#pragma once

#include <KeloAPI/http/URLRequest.hpp>

#include <fstream>
#include <iterator>
#include <string>
#include <utility>

namespace KeloAPI::testing {

/// A plain GET.
class GetRequest final : public URLRequestConvertible {
public:
    explicit GetRequest(std::optional<URL> url) { _request.url = std::move(url); }
    KeloAPI::URLRequest URLRequest() const override { return _request; }

private:
    KeloAPI::URLRequest _request;
};

/// What is in a file; empty where there is none.
inline std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace KeloAPI::testing
