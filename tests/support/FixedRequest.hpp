#pragma once

#include <KeloAPI/http/URLRequest.hpp>

#include <string_view>

namespace KeloAPI::testing {

/// Any request, as the interface asks for it; a plain GET unless changed.
struct FixedRequest : URLRequestConvertible {
    explicit FixedRequest(std::string_view url = "https://service.example/a") {
        request.url = URL::parse(url);
    }
    KeloAPI::URLRequest URLRequest() const override { return request; }
    KeloAPI::URLRequest request;
};

} // namespace KeloAPI::testing
