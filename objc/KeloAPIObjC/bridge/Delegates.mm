#include <KeloAPIObjC/bridge/Delegates.hpp>

#import <KeloAPIObjC/api/Session.h>

#include <KeloAPI/api/Session.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Pool.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>
#include <KeloAPIObjC/bridge/Weak.hpp>

namespace KeloBridge {

namespace {

using NativeSession = KeloAPI::Session;
using Text = std::optional<std::string>;

/// Asks an Objective-C delegate; where that has gone meanwhile, it knows nothing.
class ForeignDelegate final : public KeloAPI::SessionDelegate {
public:
    explicit ForeignDelegate(DelegateObject delegate)
        : _delegate(delegate) {}
    ~ForeignDelegate() override;

    DelegateObject delegate() const { return _delegate.object(); }

    Text hostForSession(NativeSession &session) override {
        return asked(@selector(hostForSession:), session);
    }
    Text schemaForSession(NativeSession &session) override {
        return asked(@selector(schemaForSession:), session);
    }
    Text sessionKeyForSession(NativeSession &session) override {
        return asked(@selector(sessionKeyForSession:), session);
    }
    Text acceptLanguageForSession(NativeSession &session) override {
        return asked(@selector(acceptLanguageForSession:), session);
    }
    Text userAgentForSession(NativeSession &session) override {
        return asked(@selector(userAgentForSession:), session);
    }
    Text keloClientForSession(NativeSession &session) override {
        return asked(@selector(keloClientForSession:), session);
    }
    bool isPollingForSession(NativeSession &session) override {
        return inPool([&] { return [delegate() isPollingForSession:wrapped(session)] != NO; });
    }
    void reauthRequiredForSession(NativeSession &session) override {
        inPool([&] { [delegate() reauthRequiredForSession:wrapped(session)]; });
    }
    bool shouldHandleCaptchaForSession(NativeSession &session,
                                       const KeloAPI::URL &captchaUrl) override {
        return inPool([&] {
            return [delegate() shouldHandleCaptchaForSession:wrapped(session)
                                                  captchaUrl:url(captchaUrl)] != NO;
        });
    }

private:
    /// Nil for a session that no shared pointer holds.
    static ::Session *wrapped(NativeSession &session) {
        return static_cast<::Session *>(toObjC(session.weak_from_this().lock()));
    }
    Text asked(SEL question, NativeSession &session) const {
        return inPool([&] {
            return optionalText([delegate() performSelector:question withObject:wrapped(session)]);
        });
    }

    const Weak _delegate;
};

ForeignDelegate::~ForeignDelegate() = default;

/// Has the compiler put the protocol, which no class here adopts, into the library for the runtime
/// to find.
[[gnu::used]] Protocol *adoptedByHosts() {
    return @protocol(SessionDelegate);
}

} // namespace

std::shared_ptr<KeloAPI::SessionDelegate> sessionDelegate(DelegateObject delegate) {
    return std::static_pointer_cast<ForeignDelegate>(
        companion(delegate, [&] { return std::make_shared<ForeignDelegate>(delegate); }));
}

DelegateObject sessionDelegate(const std::shared_ptr<KeloAPI::SessionDelegate> &delegate) {
    const auto foreign = std::dynamic_pointer_cast<ForeignDelegate>(delegate);
    return foreign == nullptr ? nil : foreign->delegate();
}

} // namespace KeloBridge
