#pragma once

#import <KeloAPIObjC/endpoints/PostActionEndpoint.h>

#include <KeloAPI/endpoints/PostActionEndpoint.hpp>
#include <KeloAPIObjC/bridge/Calls.hpp>
#include <KeloAPIObjC/bridge/HostEndpoint.hpp>

namespace KeloBridge {

/// What an action composes by itself, whatever a host overrides.
class OwnPostAction {
public:
    OwnPostAction() = default;
    OwnPostAction(const OwnPostAction &) = delete;
    OwnPostAction &operator=(const OwnPostAction &) = delete;
    virtual ~OwnPostAction() = default;
    virtual void ownSetPathFor(bool on) = 0;
};

template <class E>
class HostPostAction : public HostEndpoint<E>, public OwnPostAction {
public:
    using HostEndpoint<E>::HostEndpoint;

    void setPathFor(bool on) override {
        inPool([&] {
            id host = overriding(*this, @selector(setPathForOn:), [::PostActionEndpoint class]);
            if (host == nil) {
                E::setPathFor(on);
            } else {
                [host setPathForOn:on];
            }
        });
    }
    void ownSetPathFor(bool on) final { E::setPathFor(on); }
};

template <class E, class... Arguments>
std::shared_ptr<E> makePostAction(Arguments &&...arguments) {
    return KeloAPI::Endpoint::make<HostPostAction<E>>(std::forward<Arguments>(arguments)...);
}

/// What an action's endpoint does, whatever its parser makes.
struct PostAction {
    id (*post)(Object &endpoint);
    void (*setPath)(Object &endpoint, bool on);
    void (*toggle)(Object &endpoint, bool on, const Completion &heard);
};

/// The same for endpoints of class `E`.
template <class E, class Item>
PostAction postAction() {
    using Result = KeloAPI::PostActionResult<Item>;
    PostAction action;
    action.post = [](Object &endpoint) { return toObjC(dynamic_cast<E &>(endpoint).post()); };
    action.setPath = [](Object &endpoint, bool on) {
        if (auto *own = dynamic_cast<OwnPostAction *>(&endpoint)) {
            own->ownSetPathFor(on);
        } else {
            dynamic_cast<E &>(endpoint).setPathFor(on);
        }
    };
    action.toggle = [](Object &endpoint, bool on, const Completion &heard) {
        dynamic_cast<E &>(endpoint).toggle(
            on, tellingOutcome(heard, [PostActionResult class],
                               [](const Result &result) { return result.success()->item; }));
    };
    return action;
}

} // namespace KeloBridge

/// What derived classes say of themselves.
@interface PostActionEndpoint (Derived)
+ (KeloBridge::PostAction)postAction;
@end
