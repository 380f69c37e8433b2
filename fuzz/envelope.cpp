// Any bytes as the body of an answer, through the envelope serializer with each parser. The first
// byte chooses the parser: the 29 characters from "0" to "L" each a row of the table below, and
// those from "M" on the same rows again, with no room behind the body.
#include <KeloAPI/api/ResponseEnvelope.hpp>
#include <KeloAPI/files/KLVideoUrlBitrateSetting.hpp>
#include <KeloAPI/model/KLByline.hpp>
#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLEmpty.hpp>
#include <KeloAPI/model/KLEndlessLikesRange.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPI/model/KLLike.hpp>
#include <KeloAPI/model/KLLongform.hpp>
#include <KeloAPI/model/KLLongformViews.hpp>
#include <KeloAPI/model/KLPagedDataParser.hpp>
#include <KeloAPI/model/KLPostAudioMetadata.hpp>
#include <KeloAPI/model/KLPostProcessStatus.hpp>
#include <KeloAPI/model/KLPostSource.hpp>
#include <KeloAPI/model/KLRekelo.hpp>
#include <KeloAPI/model/KLSolicitation.hpp>
#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPI/model/KLUrlAction.hpp>
#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVideoUpload.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>
#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>
#include <KeloAPI/parsing/KLClosureParser.hpp>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>

namespace {

using namespace KeloAPI;

void expect(bool holds) {
    if (!holds) {
        std::abort();
    }
}

/// A parser for records that keep its contract: one without its identifier stops the process by
/// design, so it fails here instead.
template <class P>
class Identified final : public JsonParser<typename P::T> {
public:
    explicit Identified(const char* key)
        : _key(key) {}

    std::shared_ptr<typename P::T> parse(const JsonObject& json) const override {
        if (!json[_key].exists()) {
            throw JsonParseError(JsonParseError::InsufficientData, _key);
        }
        return P().parse(json);
    }

private:
    const char* _key;
};

class ContractualPostParser final : public JsonParser<KLWatchPost> {
public:
    std::shared_ptr<KLWatchPost> parse(const JsonObject& json) const override {
        auto post = Identified<PostParser>("postId").parse(json);
        expect(post->postId.has_value() && post->user != nullptr);
        return post;
    }
};

/// Asks a value everything that a view can be asked, and the values in it.
std::size_t visit(const JsonValue& value) {
    expect(value.exists());
    std::size_t visited = value.description().size();
    expect(value.number().has_value() == value.integer().has_value());
    if (const auto text = value.text()) {
        URL::parse(*text);
        DateFormatter().date(*text);
    }
    if (const auto object = value.object()) {
        std::size_t members = 0;
        for (const auto [key, member] : *object) {
            // The first member of a name counts, so this is the one or stands before it.
            expect((*object)[key].exists());
            visited += visit(member);
            ++members;
        }
        expect(members == object->size());
    }
    if (const auto array = value.array()) {
        std::size_t elements = 0;
        for (const JsonValue element : *array) {
            visited += visit(element);
            ++elements;
        }
        expect(elements == array->size());
    }
    return visited;
}

/// Reads a record as everything that makes no use of a parser of its own.
std::shared_ptr<Object> readAsAnything(const JsonObject& json) {
    KLPostSource::fromJSON(json);
    KLPagingMetadata metadata(json);
    expect(metadata.count() >= 0);
    for (const auto [key, value] : json) {
        visit(value);
    }
    return json.size() % 2 == 0 ? std::make_shared<KLEmpty>() : nullptr;
}

void expectWithin(const KLEntity& entity, std::int64_t utf16Length) {
    expect(entity.range.location >= 0 && entity.range.length >= 0);
    expect(entity.range.location + entity.range.length <= utf16Length);
    expect(entity.link.empty() == entity.applicationLink().empty());
}

/// Entities of a text of a flag, a combining mark and an emoji: 10 code points, 13 UTF-16 units.
std::shared_ptr<KLEntity> readAsEntity(const JsonObject& json) {
    auto entity = KLEntityParser("\xF0\x9F\x87\xA9\xF0\x9F\x87\xAA e\xCC\x81 \xF0\x9F\x98\x82 ok")
                      .parse(json);
    expectWithin(*entity, 13);
    return entity;
}

std::shared_ptr<KLByline> readAsByline(const JsonObject& json) {
    auto byline = KLBylineParser().parse(json);
    expect(byline->iconUrl.has_value() && !byline->text.empty());
    for (const auto& entity : byline->entities) {
        // A text has no more UTF-16 units than bytes.
        expectWithin(*entity, static_cast<std::int64_t>(byline->text.size()));
    }
    return byline;
}

std::shared_ptr<KLTag> readAsTag(const JsonObject& json) {
    auto tag = KLTagParser().parse(json);
    expect(tag->name == "#" + tag->nameWithoutHash());
    return tag;
}

std::shared_ptr<KLChannelParser> channelsWithTimelines() {
    return std::make_shared<KLChannelParser>(std::make_shared<KLChannelParser::TimelineParser>(
        std::make_shared<AnyObjectParserAdaptor>(std::make_shared<ContractualPostParser>())));
}

template <class T>
void serialize(const std::string& body, const std::shared_ptr<const JsonParser<T>>& parser) {
    const URLRequest request;
    const std::optional<HTTPResponse> response;
    const std::optional<Error> error;
    const auto outcome = keloModelResponseSerializer({request, response, body, error}, *parser);
    const auto& items = outcome.items;
    if (outcome.error) {
        expect(items.empty() && !outcome.metadata && !outcome.error->description().empty());
    } else {
        expect(outcome.metadata || items.size() <= 1);
    }
    for (const auto& item : items) {
        expect(item != nullptr);
    }
    if (outcome.metadata) {
        const auto next = outcome.metadata->nextPageParameters(20);
        expect(!next || next->size() >= 2);
        outcome.metadata->previousPageParameters(20);
    }
}

/// With a parser that is made of these.
template <class P, class... Arguments>
void run(const std::string& body, Arguments... arguments) {
    serialize<typename P::T>(body, std::make_shared<P>(std::move(arguments)...));
}

/// With a parser that is made of another one.
template <class P, class Inner>
void runOver(const std::string& body) {
    run<P>(body, std::make_shared<Inner>());
}

/// With a parser of a function.
template <auto parse>
void runFunction(const std::string& body) {
    using T = typename decltype(parse(std::declval<JsonObject>()))::element_type;
    run<KLClosureParser<T>>(body, parse);
}

using Run = void (*)(const std::string& body);
constexpr std::array<Run, 29> runs = {
    run<ContractualPostParser>,
    run<UserParser>,
    run<LoopDataParser>,
    run<KLEmptyParser>,
    runOver<KLPagedDataParser<ContractualPostParser>, ContractualPostParser>,
    runOver<KLPagedDataParser<LoopDataParser>, LoopDataParser>,
    runOver<AnyObjectParserAdaptor, LoopDataParser>,
    runOver<AnyObjectParserAdaptor, ContractualPostParser>,
    run<AnyObjectJsonParser>,
    runFunction<readAsAnything>,
    [](const std::string& body) { run<Identified<LikeParser>>(body, "likeId"); },
    [](const std::string& body) { run<Identified<RekeloParser>>(body, "repostId"); },
    run<SoundboardSoundParser>,
    run<KLLongformViewsParser>,
    [](const std::string& body) { run<KLVideoUrlBitrateSettingParser>(body, "1"); },
    run<KLLongformParser>,
    run<KLEndlessLikesRangeParser>,
    run<KLVideoUploadParser>,
    run<KLPostProcessStatusParser>,
    run<KLChannelParser>,
    [](const std::string& body) { serialize<KLChannel>(body, channelsWithTimelines()); },
    runFunction<readAsTag>,
    runFunction<readAsEntity>,
    runFunction<readAsByline>,
    run<KLVenueParser>,
    run<KLFoursquareVenueParser>,
    run<KLUrlActionParser>,
    run<KLSolicitationParser>,
    runFunction<KLPostAudioMetadata::fromJSON>,
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::size_t chosen = static_cast<std::uint8_t>(data[0] - '0') % (2 * runs.size());
    std::string body(reinterpret_cast<const char*>(data + 1), size - 1);
    // The HTTP layer leaves room behind a body, others may not: both ways are read.
    if (chosen < runs.size()) {
        body.reserve(body.size() + 64);
    } else {
        body.shrink_to_fit();
    }
    runs[chosen % runs.size()](body);
    return 0;
}
