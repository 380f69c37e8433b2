#pragma once

#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

#include <exception>
#include <functional>
#include <memory>
#include <utility>

namespace KeloAPI {

/// A parser whose type does not say what it makes. Meant to be derived from.
class KELO_API AnyObjectJsonParser : public Object, public JsonParser<Object> {
public:
    /// Throws `JsonParseError::NotImplemented` unless overridden.
    std::shared_ptr<Object> parse(const JsonObject& json) const override;
};

/// Wraps any parser as one whose type does not say what it makes.
class KELO_API AnyObjectParserAdaptor final : public AnyObjectJsonParser {
public:
    /// A null parser stops the process.
    template <class P>
    explicit AnyObjectParserAdaptor(std::shared_ptr<P> parser)
        : _jsonParser(erased(std::move(parser))) {}

    /// What the wrapped parser makes. Its error is thrown on; where it makes nothing,
    /// `JsonParseError::InsufficientData`.
    std::shared_ptr<Object> parse(const JsonObject& json) const override;

private:
    using Outcome = std::pair<std::shared_ptr<Object>, std::exception_ptr>;
    using Erased = std::function<Outcome(const JsonObject&)>;

    template <class P>
    static Erased erased(std::shared_ptr<P> parser) {
        require(parser != nullptr, "an adaptor needs a parser");
        return [parser = std::move(parser)](const JsonObject& json) -> Outcome {
            try {
                return {parser->parse(json), nullptr};
            } catch (...) {
                return {nullptr, std::current_exception()};
            }
        };
    }

    Erased _jsonParser;
};

} // namespace KeloAPI
