#pragma once

#include <KeloAPIObjC/bridge/BridgedParser.hpp>
#include <KeloAPIObjC/bridge/Table.hpp>

#include <memory>
#include <utility>

namespace KeloBridge {

/// A C++ parser of type `P`, as one whose type does not say what it makes.
template <class P>
class NativeParser final : public BridgedParser {
public:
    explicit NativeParser(std::shared_ptr<const P> parser)
        : _parser(std::move(parser)) {}

    const std::shared_ptr<const P> &parser() const { return _parser; }
    std::shared_ptr<Object> parseItself(const KeloAPI::JsonObject &json) const override {
        return _parser->parse(json);
    }

private:
    const std::shared_ptr<const P> _parser;
};

template <class P, class... Arguments>
std::shared_ptr<NativeParser<P>> makeParser(Arguments &&...arguments) {
    return std::make_shared<NativeParser<P>>(
        std::make_shared<const P>(std::forward<Arguments>(arguments)...));
}

} // namespace KeloBridge

/// The whole class of a parser that is made of nothing.
#define KELO_PARSER(Parser)                                                                        \
    @implementation Parser                                                                         \
    KELO_STANDS_FOR(Parser, NativeParser<KeloAPI::Parser>)                                         \
    -(instancetype)init {                                                                          \
        return adoptMade(self, [] { return makeParser<KeloAPI::Parser>(); });                      \
    }                                                                                              \
    @end
