#include "benchmarks/calls/CurlClient.hpp"

#include <curl/curl.h>
#include <simdjson.h>

#include <memory>
#include <vector>

namespace KeloBenchmark {

namespace {

class CurlCall {
public:
    CurlCall(const std::string& url, const std::string& certificatePath)
        : _easy(curl_easy_init(), &curl_easy_cleanup) {
        curl_easy_setopt(_easy.get(), CURLOPT_URL, url.c_str());
        curl_easy_setopt(_easy.get(), CURLOPT_CAINFO, certificatePath.c_str());
        curl_easy_setopt(_easy.get(), CURLOPT_FAILONERROR, 1L);
        curl_easy_setopt(_easy.get(), CURLOPT_PIPEWAIT, 1L);
        curl_easy_setopt(_easy.get(), CURLOPT_WRITEFUNCTION, &CurlCall::onBody);
        curl_easy_setopt(_easy.get(), CURLOPT_WRITEDATA, this);
        curl_easy_setopt(_easy.get(), CURLOPT_PRIVATE, this);
    }
    CurlCall(const CurlCall&) = delete;
    CurlCall& operator=(const CurlCall&) = delete;
    ~CurlCall() = default;

    static CurlCall& of(CURL* easy) {
        char* self = nullptr;
        curl_easy_getinfo(easy, CURLINFO_PRIVATE, &self);
        return *reinterpret_cast<CurlCall*>(self);
    }

    CURL* easy() const { return _easy.get(); }

    /// Parses the body and makes room for the next.
    bool takeBody(simdjson::dom::parser& parser) {
        const bool parses = parser.parse(_body).error() == simdjson::SUCCESS;
        _body.clear();
        return parses;
    }

private:
    static std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* self) {
        static_cast<CurlCall*>(self)->_body.append(bytes, size * count);
        return size * count;
    }

    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> _easy;
    std::string _body;
};

} // namespace

bool callInALoop(const std::string& url, const std::string& certificatePath, int calls,
                 std::size_t inFlight) {
    const std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)> multi(curl_multi_init(),
                                                                      &curl_multi_cleanup);
    curl_multi_setopt(multi.get(), CURLMOPT_MAX_HOST_CONNECTIONS, 6L);
    std::vector<std::unique_ptr<CurlCall>> handles;
    for (std::size_t i = 0; i < inFlight; ++i) {
        handles.push_back(std::make_unique<CurlCall>(url, certificatePath));
        curl_multi_add_handle(multi.get(), handles.back()->easy());
    }
    simdjson::dom::parser parser;
    int left = calls - static_cast<int>(inFlight);
    int running = 0;
    bool good = true;
    do {
        curl_multi_perform(multi.get(), &running);
        int queued = 0;
        while (const CURLMsg* message = curl_multi_info_read(multi.get(), &queued)) {
            CURL* easy = message->easy_handle;
            good = message->data.result == CURLE_OK && CurlCall::of(easy).takeBody(parser) && good;
            curl_multi_remove_handle(multi.get(), easy);
            if (left-- > 0) {
                curl_multi_add_handle(multi.get(), easy);
                running = 1;
            }
        }
        if (running > 0) {
            curl_multi_poll(multi.get(), nullptr, 0, 1000, nullptr);
        }
    } while (running > 0);
    for (const auto& handle : handles) {
        curl_multi_remove_handle(multi.get(), handle->easy());
    }
    return good;
}

} // namespace KeloBenchmark
