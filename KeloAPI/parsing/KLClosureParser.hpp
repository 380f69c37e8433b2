#pragma once

#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

#include <functional>
#include <memory>
#include <utility>

namespace KeloAPI {

/// A parser made from a callback.
template <class Item>
class KLClosureParser final : public JsonParser<Item> {
public:
    /// Makes an object, or none, or throws.
    using Parser = std::function<std::shared_ptr<Item>(const JsonObject& json)>;

    /// An empty callback stops the process.
    explicit KLClosureParser(Parser parser)
        : _parser(std::move(parser)) {
        require(_parser != nullptr, "a closure parser needs a closure");
    }

    /// What the callback makes. Its error is thrown on; where it makes nothing,
    /// `JsonParseError::IncorrectType`.
    std::shared_ptr<Item> parse(const JsonObject& json) const override {
        if (auto object = _parser(json)) {
            return object;
        }
        throw JsonParseError(JsonParseError::IncorrectType);
    }

private:
    Parser _parser;
};

} // namespace KeloAPI
