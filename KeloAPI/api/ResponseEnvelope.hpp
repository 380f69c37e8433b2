#pragma once

#include <KeloAPI/base/Error.hpp>
#include <KeloAPI/base/Export.hpp>
#include <KeloAPI/http/Request.hpp>
#include <KeloAPI/model/Metadata.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace KeloAPI {

/// User-info key of a service error's status code, a number.
inline constexpr std::string_view KLAPIStatusCodeKey = "KLAPIStatusCodeKey";
/// User-info key of the URL at which a captcha is to be solved; with the status code 419 only, and
/// only when the service sent one.
inline constexpr std::string_view KLCaptchaUrlKey = "KLCaptchaUrlKey";

/// Gathers the items of one answer; hides their type from the envelope's reader.
class KELO_API RecordCollector {
public:
    RecordCollector() = default;
    RecordCollector(const RecordCollector&) = delete;
    RecordCollector& operator=(const RecordCollector&) = delete;
    virtual ~RecordCollector();

    virtual void reserve(std::size_t count) = 0;
    /// Parses one record and keeps its item, or throws what the parser throws.
    virtual void parse(const JsonObject& record) = 0;
    /// Lets the items go again.
    virtual void clear() = 0;
};

/// Gathers the items that one parser makes.
template <class T>
class ItemCollector final : public RecordCollector {
public:
    explicit ItemCollector(std::shared_ptr<const JsonParser<T>> parser)
        : _parser(std::move(parser)) {}

    void reserve(std::size_t count) override { _items.reserve(count); }
    void parse(const JsonObject& record) override {
        _items.push_back(detail::notNull(_parser->parse(record)));
    }
    void clear() override { _items.clear(); }

    std::vector<std::shared_ptr<T>> take() { return std::move(_items); }

private:
    std::shared_ptr<const JsonParser<T>> _parser;
    std::vector<std::shared_ptr<T>> _items;
};

/// What an answer came to beside its items.
struct ResponseEnvelope {
    /// The paging values; absent where the answer is no list.
    std::optional<Metadata> metadata;
    /// Absent for a success. With an error there are no items.
    std::optional<Error> error;
};

/// Reads an answer: checks the envelope ("error", "code", "data") and parses the records, or the
/// one object, that "data" holds. Errors of the HTTP layer come through unchanged; the service's
/// and the envelope's own have the service's error domain.
KELO_API ResponseEnvelope keloModelResponseSerializer(const ResponseContent& content,
                                                      RecordCollector& records);

} // namespace KeloAPI
