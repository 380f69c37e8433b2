#pragma once

#import <KeloAPIObjC/api/Endpoint.h>

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPIObjC/bridge/Pool.hpp>
#include <KeloAPIObjC/bridge/Table.hpp>

#include <memory>
#include <utility>

/// What a class that a host has derived from an endpoint's overrides, as the C++ library asks for
/// it. Where its class overrides nothing, the endpoint itself knows.
namespace KeloBridge {

/// The method of this name; any other text raises `NSInvalidArgumentException`.
KeloAPI::Method methodOf(NSString *name);
KeloAPI::HeaderFields headerFields(NSDictionary *fields);
NSDictionary *headerFields(const KeloAPI::HeaderFields &fields);
NSMutableURLRequest *urlRequest(const KeloAPI::URLRequest &request);
/// `request` with everything that `changed` tells.
KeloAPI::URLRequest urlRequest(KeloAPI::URLRequest request, NSURLRequest *changed);

/// What an endpoint does by itself, whatever a host overrides.
class OwnEndpoint {
public:
    OwnEndpoint() = default;
    OwnEndpoint(const OwnEndpoint &) = delete;
    OwnEndpoint &operator=(const OwnEndpoint &) = delete;
    virtual ~OwnEndpoint();
    virtual KeloAPI::HeaderFields ownHeaderFields() const = 0;
    virtual KeloAPI::URLRequest ownURLRequest() const = 0;
};

template <class E>
class HostEndpoint : public E, public OwnEndpoint {
public:
    template <class... Arguments>
    explicit HostEndpoint(typename E::Key key, Arguments &&...arguments)
        : E(key, std::forward<Arguments>(arguments)...) {}
    /// The Objective-C object goes first: its `dealloc` may use the endpoint.
    ~HostEndpoint() override { this->deleteCompanion(); }

    KeloAPI::HeaderFields headerFields() const override {
        return inPool([this] {
            id host = overriding(*this, @selector(headerFields), [::Endpoint class]);
            return host == nil ? E::headerFields() : KeloBridge::headerFields([host headerFields]);
        });
    }
    KeloAPI::URLRequest URLRequest() const override {
        return inPool([this] {
            id host = overriding(*this, @selector(URLRequest), [::Endpoint class]);
            return host == nil ? E::URLRequest() : urlRequest(E::URLRequest(), [host URLRequest]);
        });
    }
    KeloAPI::HeaderFields ownHeaderFields() const final { return E::headerFields(); }
    KeloAPI::URLRequest ownURLRequest() const final { return E::URLRequest(); }
};

template <class E, class... Arguments>
std::shared_ptr<E> makeEndpoint(Arguments &&...arguments) {
    return KeloAPI::Endpoint::make<HostEndpoint<E>>(std::forward<Arguments>(arguments)...);
}

} // namespace KeloBridge

/// `KELO_MAKE` of an endpoint.
#define KELO_MAKE_ENDPOINT(...)                                                                    \
    adoptMade(self, [&] { return makeEndpoint<KELO_NATIVE>(__VA_ARGS__); })

/// `initWithSession:`, where the session is all that the endpoint is made of.
#define KELO_INIT_WITH_SESSION()                                                                   \
    -(instancetype)initWithSession : (Session *)session {                                          \
        return KELO_MAKE_ENDPOINT(required<KeloAPI::Session>(session, @"session"));                \
    }
