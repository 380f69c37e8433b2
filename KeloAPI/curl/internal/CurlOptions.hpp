#pragma once

#include <curl/curl.h>

#include <type_traits>

namespace KeloAPI {

/// Sets the options of one easy handle. The first failure is kept, and nothing is set after it: a
/// request that is not set up in full must not be sent.
class CurlOptions {
public:
    explicit CurlOptions(CURL* easy)
        : _easy(easy) {}

    template <class Value>
    void set(CURLoption option, Value value) {
        static_assert(std::is_same_v<Value, long> || std::is_same_v<Value, curl_off_t> ||
                          std::is_pointer_v<Value> || std::is_null_pointer_v<Value>,
                      "libcurl reads the value as one of these");
        if (_code == CURLE_OK) {
            _code = curl_easy_setopt(_easy, option, value);
        }
    }

    /// Counts as a failure of a setter.
    void fail(CURLcode code) { _code = _code == CURLE_OK ? code : _code; }

    /// The first failure; `CURLE_OK` when there was none.
    CURLcode code() const { return _code; }

private:
    CURL* _easy;
    CURLcode _code = CURLE_OK;
};

} // namespace KeloAPI
