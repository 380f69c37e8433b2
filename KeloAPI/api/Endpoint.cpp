#include <KeloAPI/api/AlamofireEndpointRequest.hpp>
#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/http/ResponseSerializers.hpp>
#include <KeloAPI/queues/Diagnostics.hpp>

#include <string_view>

namespace KeloAPI {

namespace {

constexpr std::string_view sessionIdField = "kelo-session-id";

} // namespace

Endpoint::Endpoint(Key, std::shared_ptr<Session> session)
    : _session(std::move(session)) {
    require(_session != nullptr, "an endpoint needs a session");
}

std::shared_ptr<Endpoint> Endpoint::create(std::shared_ptr<Session> session) {
    return make<Endpoint>(std::move(session));
}

HeaderFields Endpoint::headerFields() const {
    HeaderFields fields;
    const auto set = [&fields](std::string_view name, std::optional<std::string> value) {
        if (value) {
            fields.emplace(name, *std::move(value));
        }
    };
    set("Accept-Language", _session->acceptLanguage());
    set("User-Agent", _session->userAgent());
    set("X-Kelo-Client", _session->keloClient());
    set(sessionIdField, _session->sessionId());
    if (_session->polling()) {
        set("X-Kelo-Polling", "true");
    }
    return fields;
}

KeloAPI::URLRequest Endpoint::URLRequest() const {
    KeloAPI::URLRequest request;
    const std::string where = path();
    if (where.find("http") == std::string::npos) {
        const std::string text = _session->schema() + _session->host();
        const auto base = URL::parse(text);
        // A piece of the path must not become the host where the base has none.
        if (!base) {
            require(text.empty(), "scheme and host of a session do not form a URL");
        } else if (const URL url = base->appendingPathComponent(where);
                   url.host() == base->host()) {
            request.url = url;
        }
    } else {
        request.url = URL::parse(where);
    }
    request.headerFields = headerFields();
    request.originBoundFields.emplace(sessionIdField);
    request.method = method();
    // What cannot be encoded is left out; the request goes as far as it was encoded.
    static_cast<void>(parameterEncoding().encode(request, parameters()));
    return request;
}

std::shared_ptr<EndpointRequest> Endpoint::send(ResponseReader reader) {
    return deliver(_session->request(*this), std::move(reader));
}

std::shared_ptr<EndpointRequest> Endpoint::sendUpload(ResponseReader reader, Data data) {
    return deliver(_session->upload(*this, std::move(data)), std::move(reader));
}

void Endpoint::download(const URL& destinationUrl, DownloadCompletion completionHandler,
                        DownloadDelivery delivery) {
    detail::requireCompletion(completionHandler);
    // The endpoint lives until its completion has run, as in every other call.
    _session->download(
        *this, destinationUrl,
        [self = shared_from_this(), completionHandler = std::move(completionHandler)](
            const URL& url, std::optional<Error> error) {
            completionHandler(url, std::move(error));
        },
        _downloadProgressHandler, delivery);
}

std::shared_ptr<EndpointRequest> Endpoint::request(TextCompletion completionHandler) {
    detail::requireCompletion(completionHandler);
    const auto request = _session->request(*this);
    auto handle = AlamofireEndpointRequest::create(request);
    request->response<std::string>(
        serializeText,
        [self = shared_from_this(), completionHandler = std::move(completionHandler)](
            Result<std::string> text, const Timeline&) {
            if (text) {
                completionHandler(std::move(text.value()), std::nullopt);
            } else {
                completionHandler(std::nullopt, text.error());
            }
        });
    return handle;
}

std::shared_ptr<EndpointRequest> Endpoint::deliver(const std::shared_ptr<Request>& request,
                                                   ResponseReader reader) {
    auto handle = AlamofireEndpointRequest::create(request);
    const ReadingPlace place = reader.place;
    auto serializer = [self = shared_from_this(), reader = std::move(reader),
                       isTraced = false](const ResponseContent& content,
                                         Timeline timeline) mutable -> Request::Completion {
        // Once: what runs out of memory is asked again.
        if (!std::exchange(isTraced, true)) {
            Diagnostics::write(content.request.url ? content.request.description() : "nil");
        }
        EndpointReport report = reader.read(content);
        timeline.serializationCompletedTime = Date::now();
        return [self, reader, report = std::move(report), timeline] {
            if (report.error) {
                self->reportToSession(*report.error, reader);
            }
            report.complete(timeline);
        };
    };
    request->response(std::move(serializer), place);
    return handle;
}

void Endpoint::reportToSession(const Error& error, const ResponseReader& reader) {
    const auto code = error.integer(KLAPIStatusCodeKey);
    if (code != 100 && code != 103 && code != 419) {
        return;
    }
    const auto self = shared_from_this();
    const EndpointRetry retry = [self, reader] { self->send(reader); };
    if (code != 419) {
        _session->endpointRequiresAuth(self, retry);
    } else if (const auto captchaUrl = error.url(KLCaptchaUrlKey)) {
        _session->endpointRequiresCaptcha(self, *captchaUrl, retry);
    } else {
        Diagnostics::write("got captcha error but no url supplied!");
    }
}

} // namespace KeloAPI
