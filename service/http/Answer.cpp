#include "service/http/Answer.hpp"

namespace KeloService {

Answer jsonAnswer(const Json& document, int status) {
    Answer answer;
    answer.status = status;
    // Texts that clients sent may come back in an error; they need not be UTF-8.
    answer.body = document.dump(-1, ' ', false, Json::error_handler_t::replace);
    return answer;
}

Answer dataAnswer(const Json& data) {
    return jsonAnswer({{"data", data}});
}

Answer errorAnswer(const ServiceError& error) {
    Json envelope{{"error", error.what()}, {"code", error.code}};
    if (!error.data.is_null()) {
        envelope["data"] = error.data;
    }
    return jsonAnswer(envelope, error.status);
}

} // namespace KeloService
