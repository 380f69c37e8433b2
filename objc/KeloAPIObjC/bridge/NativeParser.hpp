#pragma once

#import <KeloAPIObjC/bridge/KLBridged.h>

#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>

#include <memory>
#include <utility>

namespace KeloBridge {

/// A C++ parser of type `P`, as one whose type does not say what it makes.
template <class P>
class NativeParser final : public KeloAPI::AnyObjectJsonParser {
public:
    explicit NativeParser(std::shared_ptr<const P> parser)
        : _parser(std::move(parser)) {}

    const std::shared_ptr<const P> &parser() const { return _parser; }
    std::shared_ptr<Object> parse(const KeloAPI::JsonObject &json) const override {
        return _parser->parse(json);
    }

private:
    const std::shared_ptr<const P> _parser;
};

template <class P>
void addParser(Class made) {
    add<NativeParser<P>>(made);
}

/// Lets an object that has just been allocated stand for a parser made of `arguments`.
template <class P, class... Arguments>
id holdParser(KLBridged *made, Arguments &&...arguments) {
    return hold(made, std::make_shared<NativeParser<P>>(
                          std::make_shared<const P>(std::forward<Arguments>(arguments)...)));
}

} // namespace KeloBridge
