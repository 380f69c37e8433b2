#include "service/routes/Guard.hpp"
#include "service/routes/Routes.hpp"

namespace KeloService {
namespace {

Answer solve(const Call& call, const Context& context) {
    if (!context.store.sessions.solveCaptcha(call.argument("token"))) {
        throw ServiceError(404, ErrorCode::notFound, "There is no such captcha");
    }
    return dataAnswer({{"solved", true}});
}

Answer show(const Call& call, const Context& context) {
    if (!context.store.sessions.isCaptchaOpen(call.argument("token"))) {
        throw ServiceError(404, ErrorCode::notFound, "There is no such captcha");
    }
    Answer page;
    page.contentType = "text/html; charset=utf-8";
    page.body = "<!doctype html><title>Are you human?</title>"
                "<form method=\"post\" action=\"/captcha/" +
                call.argument("token") + "/solve\"><button>I am human</button></form>\n";
    return page;
}

} // namespace

void addCaptchaRoutes(Router& router, const Context& context) {
    router.add("GET", "/captcha/:token",
               [&context](const Call& call) { return show(call, context); });
    for (const char* method : {"GET", "POST"}) {
        router.add(method, "/captcha/:token/solve",
                   [&context](const Call& call) { return solve(call, context); });
    }
}

} // namespace KeloService
