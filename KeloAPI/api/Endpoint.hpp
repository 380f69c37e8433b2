#pragma once

#include <KeloAPI/api/EndpointErrorHandler.hpp>
#include <KeloAPI/api/EndpointRequest.hpp>
#include <KeloAPI/api/ResponseEnvelope.hpp>
#include <KeloAPI/api/Session.hpp>
#include <KeloAPI/base/Error.hpp>
#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/http/ParameterEncoding.hpp>
#include <KeloAPI/http/URLRequest.hpp>
#include <KeloAPI/json/Parameters.hpp>
#include <KeloAPI/model/Metadata.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

/// What is reported of a response on the main queue: first the error, if any, to the session, then
/// the outcome to the caller.
struct EndpointReport {
    std::optional<Error> error; ///< Absent for a success.
    /// Calls the caller's completion. Never empty.
    std::function<void(const Timeline& timeline)> complete;
};

/// Reads a response, off the main queue. A retry uses the same reader again.
struct ResponseReader {
    /// Makes the report of a response. Never empty, and may be called again.
    std::function<EndpointReport(const ResponseContent& content)> read;
    ReadingPlace place = ReadingPlace::ResponseQueue; ///< Where `read` may be called.
};

/// The base of every API call. A derived class says where a call goes (`path`, `method`,
/// `parameters` and their encoding) and then sends it; this class makes the request, reads the
/// response's envelope and hands the outcome out.
///
/// A call's lifecycle:
///  1. The send operation makes the URL request from the endpoint's and the session's values of
///     that moment, on the calling thread, and returns the call's handle at once.
///  2. While bytes move, the handle's progress handler is called on the main queue.
///  3. The response is parsed off the main thread, in the context called the response queue (a
///     short one, by the library's own parser, on the network thread), and one trace line is
///     written.
///  4. On the main queue, the service codes 100 and 103 (sign in again) and 419 (captcha) go to
///     the session, together with a retry that sends this endpoint's call again from scratch.
///  5. Right after that the completion is called: always, exactly once for each send, and never
///     inside the call that sent. A retry that the session releases is another send and ends in
///     another call of the same completion.
/// The endpoint, the parser and the completion live until then, and as long as a retry waits.
///
/// A completion must not be empty, unless a call says that it may be: such a call stops the process
/// before it sends anything.
///
/// Endpoints are made by `create` functions only, as shared pointers. One endpoint serves one call
/// at a time, from one thread at a time; different endpoints are independent.
class KELO_API Endpoint : public Object,
                          public URLRequestConvertible,
                          public std::enable_shared_from_this<Endpoint> {
public:
    /// Takes the text of a response, or the error in its place.
    using TextCompletion =
        std::function<void(std::optional<std::string> text, std::optional<Error> error)>;
    using DownloadCompletion = Session::DownloadCompletion; ///< Takes the end of a download.

    /// Where the call goes: a path below the service's root, or a complete URL (a path that holds
    /// "http" anywhere is taken for one). Empty by default.
    ///
    /// A complete URL gets all header fields of the call, the session key among them, whatever its
    /// host and with or without TLS: give an endpoint only URLs of places that may have the key.
    /// From there on, a redirect takes the key to no other origin.
    virtual const std::string& path() const { return _path; }
    /// Replaces the path, for calls that are sent from then on. The setters below do the same.
    virtual void setPath(std::string path) { _path = std::move(path); }
    /// `GET` by default.
    virtual Method method() const { return _method; }
    virtual void setMethod(Method method) { _method = method; } ///< Replaces the method.
    /// Into the query string by default.
    virtual ParameterEncoding parameterEncoding() const { return _parameterEncoding; }
    /// Replaces the encoding.
    virtual void setParameterEncoding(ParameterEncoding parameterEncoding) {
        _parameterEncoding = parameterEncoding;
    }
    /// None by default.
    virtual const Parameters& parameters() const { return _parameters; }
    /// Replaces all parameters.
    virtual void setParameters(Parameters parameters) { _parameters = std::move(parameters); }
    /// The header fields of the call, each only where the session has a value for it:
    /// "Accept-Language", "User-Agent", "X-Kelo-Client", "kelo-session-id", and "X-Kelo-Polling"
    /// with "true" for a background poll.
    virtual HeaderFields headerFields() const;
    /// The request that is sent, made anew at every call. A base that is not a URL stops the
    /// process; a path that should be a URL and is not makes a request without one.
    KeloAPI::URLRequest URLRequest() const override;
    /// Sends the call and has `reader` read the response: what the `request` template ends in.
    virtual std::shared_ptr<EndpointRequest> send(ResponseReader reader);
    /// The same with `data` as the body.
    virtual std::shared_ptr<EndpointRequest> sendUpload(ResponseReader reader, Data data);
    /// Sends the call and keeps the response as the file `destinationUrl`. No envelope is read, and
    /// no handle is returned; progress goes to the handler that was set before. The completion is
    /// called where `delivery` says.
    virtual void download(const URL& destinationUrl, DownloadCompletion completionHandler,
                          DownloadDelivery delivery = DownloadDelivery::MainQueue);
    /// Sends the call and hands out the response's body as text, whatever it says.
    virtual std::shared_ptr<EndpointRequest> request(TextCompletion completionHandler);

    /// Sends the call and parses the response: `completionHandler(items, metadata, timeline,
    /// error)` with a `std::vector<std::shared_ptr<P::T>>` (empty with an error), a
    /// `std::optional<Metadata>` (present for a list), a `const Timeline&` and a
    /// `std::optional<Error>`. Neither the parser nor the completion may be empty, and the
    /// completion must not throw.
    template <class P, class Completion>
    std::shared_ptr<EndpointRequest> request(std::shared_ptr<P> parser,
                                             Completion completionHandler);

    /// As `request`, with `data` as the body. A retry sends the call without it.
    template <class P, class Completion>
    std::shared_ptr<EndpointRequest> upload(std::shared_ptr<P> parser, Data data,
                                            Completion completionHandler);

    /// Called on the main queue while the bytes of a later `download` arrive. Empty by default.
    void setDownloadProgressHandler(Session::DownloadProgress handler) {
        _downloadProgressHandler = std::move(handler);
    }

    /// Never null.
    const std::shared_ptr<Session>& session() const { return _session; }

    /// An endpoint of no particular kind: set its fields, then send.
    static std::shared_ptr<Endpoint> create(std::shared_ptr<Session> session);

    /// Endpoints are the same when their paths are; nothing else plays a part.
    friend bool operator==(const Endpoint& a, const Endpoint& b) { return a.path() == b.path(); }

protected:
    /// Only `make` has one: a constructor that asks for it cannot be called from elsewhere.
    class Key {
        friend class Endpoint;
        Key() = default;
    };

    /// `session` must not be null.
    Endpoint(Key key, std::shared_ptr<Session> session);

public:
    /// Makes an endpoint of a derived class, whose constructor takes a `Key` before `arguments`.
    template <class E, class... Arguments>
    static std::shared_ptr<E> make(Arguments&&... arguments);

private:
    template <class E>
    class Maker;

    std::shared_ptr<EndpointRequest> deliver(const std::shared_ptr<Request>& request,
                                             ResponseReader reader);
    void reportToSession(const Error& error, const ResponseReader& reader);

    std::string _path;
    Method _method = Method::GET;
    ParameterEncoding _parameterEncoding = ParameterEncoding::URL;
    Parameters _parameters;
    Session::DownloadProgress _downloadProgressHandler;
    const std::shared_ptr<Session> _session;
};

namespace detail {

/// A completion that can be empty must not be. A lambda cannot, though one without captures could
/// be compared with a null pointer: what can be set to null is asked.
template <class Completion>
void requireCompletion(const Completion& completion) {
    if constexpr (std::is_assignable_v<Completion&, std::nullptr_t>) {
        require(completion != nullptr, "a call needs a completion");
    }
}

// Completions of parsed calls, made of simpler ones.

/// Of `completion(item, error)`: the first item, or null.
template <class Completion>
auto firstItem(Completion completion) {
    requireCompletion(completion);
    return [completion = std::move(completion)](auto items, const std::optional<Metadata>&,
                                                const Timeline&, std::optional<Error> error) {
        completion(items.empty() ? nullptr : std::move(items.front()), std::move(error));
    };
}

/// Of `completion(items, error)`.
template <class Completion>
auto allItems(Completion completion) {
    requireCompletion(completion);
    return [completion = std::move(completion)](auto items, const std::optional<Metadata>&,
                                                const Timeline&, std::optional<Error> error) {
        completion(std::move(items), std::move(error));
    };
}

/// Of `completion(error)`.
template <class Completion>
auto errorOnly(Completion completion) {
    requireCompletion(completion);
    return [completion = std::move(completion)](const auto&, const std::optional<Metadata>&,
                                                const Timeline&, std::optional<Error> error) {
        completion(std::move(error));
    };
}

template <class P, class Completion>
ResponseReader responseReader(std::shared_ptr<P> parser, Completion completion) {
    require(parser != nullptr, "a call needs a parser");
    requireCompletion(completion);
    auto read = [parser = std::shared_ptr<const JsonParser<typename P::T>>(std::move(parser)),
                 completion = std::make_shared<Completion>(std::move(completion))](
                    const ResponseContent& content) -> EndpointReport {
        auto response = keloModelResponseSerializer(content, *parser);
        std::optional<Error> error = response.error;
        return {std::move(error),
                [completion, response = std::move(response)](const Timeline& timeline) mutable {
                    (*completion)(std::move(response.items), std::move(response.metadata), timeline,
                                  std::move(response.error));
                }};
    };
    return {std::move(read),
            readsOnArrival<P> ? ReadingPlace::WhereItArrives : ReadingPlace::ResponseQueue};
}

} // namespace detail

/// Lets a constructor be reached that is protected in the endpoint's class.
template <class E>
class Endpoint::Maker final : public E {
public:
    template <class... Arguments>
    explicit Maker(Key key, Arguments&&... arguments)
        : E(key, std::forward<Arguments>(arguments)...) {}
};

template <class E, class... Arguments>
std::shared_ptr<E> Endpoint::make(Arguments&&... arguments) {
    return std::make_shared<Maker<E>>(Key(), std::forward<Arguments>(arguments)...);
}

template <class P, class Completion>
std::shared_ptr<EndpointRequest> Endpoint::request(std::shared_ptr<P> parser,
                                                   Completion completionHandler) {
    return send(detail::responseReader(std::move(parser), std::move(completionHandler)));
}

template <class P, class Completion>
std::shared_ptr<EndpointRequest> Endpoint::upload(std::shared_ptr<P> parser, Data data,
                                                  Completion completionHandler) {
    ResponseReader reader = detail::responseReader(std::move(parser), std::move(completionHandler));
    return sendUpload(std::move(reader), std::move(data));
}

} // namespace KeloAPI

/// The hash of an endpoint is that of its path.
template <>
struct std::hash<KeloAPI::Endpoint> {
    std::size_t operator()(const KeloAPI::Endpoint& endpoint) const {
        return std::hash<std::string>()(endpoint.path());
    }
};
