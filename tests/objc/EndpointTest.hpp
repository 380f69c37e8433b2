#pragma once

#include "objc/Block.hpp"
#include "objc/Listener.h"
#include "objc/ObjcTest.hpp"
#include "support/RegistrySession.hpp"

#include <KeloAPIObjC/bridge/Bridge.hpp>

#include <string>

namespace KeloObjcTest {

using KeloAPI::fakes::ScriptedAnswer;

/// A test with a listener and the registry's authenticated session over a scripted transport.
class EndpointTest : public KeloAPI::testing::RegistrySessionTest {
protected:
    /// Runs the main queue until the listener has heard so many calls.
    bool hears(NSUInteger count) {
        return KeloAPI::testing::runUntil([&] { return [listener.calls count] >= count; });
    }
    /// Answers the oldest request that waits, and waits for the call.
    bool answered(const std::string &json) {
        const NSUInteger count = [listener.calls count];
        transport->answer(ScriptedAnswer::json(json));
        return hears(count + 1) && [listener.calls count] == count + 1;
    }
    /// The method and the address of the last request, below the service's root.
    std::string sent() const {
        const std::string root = "https://service.example/";
        const std::string address = lastRequest().url->absoluteString();
        return std::string(name(lastRequest().method)) + ' ' +
               (address.rfind(root, 0) == 0 ? address.substr(root.size()) : address);
    }
    /// The registry's session.
    Session *registrySession() const { return KeloBridge::toObjC(session); }

    Listener *const listener = [[Listener new] autorelease];
};

/// The object's methods with blocks.
inline id<BlockForms> blocks(id object) {
    return object;
}

} // namespace KeloObjcTest
