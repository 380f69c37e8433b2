#include <KeloAPI/fakes/Cassette.hpp>
#include <KeloAPI/fakes/internal/CassetteContents.hpp>
#include <KeloAPI/fakes/internal/CassetteFile.hpp>
#include <KeloAPI/http/internal/DownloadFile.hpp>

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

namespace KeloAPI::fakes {

namespace {

Error fileError(const std::string& message, Error underlying) {
    return Error::withMessage(CassetteErrorDomain,
                              static_cast<std::int64_t>(CassetteErrorCode::File), message,
                              std::move(underlying));
}

Error errorOfFormat(const std::string& path, const Error& error) {
    return Error::withMessage(error.domain(), error.code(),
                              path + " is " + error.localizedDescription(), error.underlying());
}

RecordedBody bodyWithout(const Blanker& blanker, RecordedBody body) {
    body.bytes = blanker.bodyWithoutKnownValues(body.bytes);
    return body;
}

HeaderFields fieldsWithout(const Blanker& blanker, HeaderFields fields) {
    for (auto& [name, value] : fields) {
        value = blanker.withoutKnownValues(std::move(value));
    }
    return fields;
}

/// An error as a cassette has it: without what lies behind it and without further facts.
Error plainError(const Error& error, const std::string& message) {
    return Error::withMessage(error.domain(), error.code(), message);
}

RecordedExchange exchangeWithout(const Blanker& blanker, RecordedExchange exchange) {
    RecordedRequest& request = exchange.request;
    request.url = blanker.withoutKnownValues(std::move(request.url));
    request.headerFields = fieldsWithout(blanker, std::move(request.headerFields));
    request.body = bodyWithout(blanker, std::move(request.body));
    if (auto& response = exchange.response) {
        response->url = blanker.withoutKnownValues(std::move(response->url));
        response->headerFields = fieldsWithout(blanker, std::move(response->headerFields));
        response->body = bodyWithout(blanker, std::move(response->body));
    }
    if (auto& error = exchange.error) {
        error = plainError(*error, blanker.withoutKnownValues(error->localizedDescription()));
    }
    return exchange;
}

} // namespace

RecordedRequest blankedRequest(const URLRequest& request, Blanker& blanker,
                               std::size_t maxBodyBytes) {
    RecordedRequest recorded;
    recorded.method = request.method;
    recorded.headerFields = blanker.fields(request.headerFields, request.originBoundFields);
    recorded.url = blanker.text(request.url->absoluteString());
    if (request.body) {
        BodyRecorder body(maxBodyBytes);
        body.append(request.body->text());
        recorded.body = {blanker.requestBody(body.bytes()), body.tooLong()};
    }
    return recorded;
}

std::size_t Cassette::Contents::begin(const URLRequest& request) {
    const std::lock_guard lock(mutex);
    exchanges.push_back({blankedRequest(request, blanker, maxBodyBytes), {}, {}, false});
    return exchanges.size() - 1;
}

void Cassette::Contents::end(std::size_t place, const std::optional<HTTPResponse>& head,
                             const BodyRecorder& body, const std::optional<Error>& error) {
    const std::lock_guard lock(mutex);
    RecordedExchange& exchange = exchanges[place];
    if (head) {
        RecordedResponse response;
        response.url = blanker.text(head->url.absoluteString());
        response.statusCode = head->statusCode;
        response.headerFields = blanker.fields(head->headerFields);
        if (head->expectedContentLength != static_cast<std::int64_t>(body.size())) {
            response.expectedContentLength = head->expectedContentLength;
        }
        response.body = {blanker.responseBody(body.bytes()), body.tooLong()};
        exchange.response = std::move(response);
    }
    if (error) {
        exchange.error = plainError(*error, blanker.text(error->localizedDescription()));
    }
    exchange.isOver = true;
}

std::vector<RecordedExchange> Cassette::Contents::finished() const {
    const std::lock_guard lock(mutex);
    std::vector<RecordedExchange> finished;
    for (const RecordedExchange& exchange : exchanges) {
        if (exchange.isOver) {
            finished.push_back(exchangeWithout(blanker, exchange));
        }
    }
    return finished;
}

SecretNames Cassette::Contents::secretNames() const {
    const std::lock_guard lock(mutex);
    return blanker.names();
}

Cassette::Cassette(std::size_t maxBodyBytes)
    : _contents(std::make_unique<Contents>(SecretNames(), maxBodyBytes)) {}

Cassette::~Cassette() = default;

Result<std::shared_ptr<Cassette>> Cassette::parse(const std::string& text) {
    auto file = readCassette(text);
    if (!file) {
        return file.error();
    }
    auto cassette = std::make_shared<Cassette>(file.value().maxBodyBytes);
    for (const std::string& name : file.value().secretNames.added()) {
        cassette->addSecretName(name);
    }
    cassette->_contents->exchanges = std::move(file.value().exchanges);
    return cassette;
}

Result<std::shared_ptr<Cassette>> Cassette::load(const std::string& path) {
    std::error_code unknown;
    const bool isFolder = std::filesystem::is_directory(path, unknown); // libc++ reads it as empty
    std::ifstream file(path, std::ios::binary);
    std::string text;
    std::array<char, 65536> piece{};
    while (file.read(piece.data(), piece.size()) || file.gcount() > 0) {
        text.append(piece.data(), static_cast<std::size_t>(file.gcount()));
    }
    if (isFolder || !file.is_open() || file.bad()) {
        const std::error_code reason(isFolder ? EISDIR : errno, std::generic_category());
        return fileError("the cassette " + path + " cannot be read",
                         Error::withMessage("errno", reason.value(), reason.message()));
    }
    auto cassette = parse(text);
    return cassette ? cassette : errorOfFormat(path, cassette.error());
}

std::optional<Error> Cassette::save(const std::string& path) const {
    DownloadFile file(path);
    if (file.append(text()) && file.commit()) {
        return std::nullopt;
    }
    return fileError("the cassette " + path + " cannot be written", *file.error());
}

std::string Cassette::text() const {
    return cassetteText({_contents->secretNames(), _contents->maxBodyBytes, _contents->finished()});
}

void Cassette::addSecretName(std::string_view name) {
    const std::lock_guard lock(_contents->mutex);
    _contents->blanker.addName(name);
}

std::size_t Cassette::size() const {
    const std::lock_guard lock(_contents->mutex);
    std::size_t count = 0;
    for (const RecordedExchange& exchange : _contents->exchanges) {
        count += exchange.isOver ? 1 : 0;
    }
    return count;
}

} // namespace KeloAPI::fakes
