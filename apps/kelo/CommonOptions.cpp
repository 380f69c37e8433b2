#include "CommonOptions.hpp"

#include "Text.hpp"

#include <KeloAPI/KeloAPI.hpp>

namespace KeloHost {

namespace {

std::string checkHost(const std::string& host) {
    const auto url = KeloAPI::URL::parse("https://" + host);
    const bool onlyHost = url && !url->host().empty() && url->path().empty() && !url->query() &&
                          host.find_first_of("@#") == std::string::npos;
    const bool usablePort = onlyHost && url->port().value_or(0) != 0 && host.back() != ':';
    return usablePort ? "" : "'" + host + "' is not of the form HOST or HOST:PORT";
}

std::string checkHeaderValue(const std::string& value) {
    return fitsHeader(value) ? "" : "only printable ASCII characters can be sent";
}

Parameter flagFor(const std::string& name, const std::string& help) {
    return {.name = name, .help = help, .form = Parameter::Form::Flag};
}

} // namespace

std::vector<Parameter> commonParameters() {
    using Form = Parameter::Form;
    const Options usual;
    return {
        {.name = "--help", .help = "Print this help", .form = Form::Help, .shortName = "-h"},
        {.name = "--version",
         .help = "Print the version",
         .form = Form::Version,
         .shortName = "-V"},
        {.name = "--host",
         .help = "Where the service is",
         .valueName = "HOST[:PORT]",
         .defaultValue = usual.host,
         .check = checkHost,
         .environment = "KELO_HOST"},
        {.name = "--session",
         .help = "Session key of the signed-in user, in place of the one that login keeps",
         .valueName = "KEY",
         .defaultValue = usual.session,
         .check = checkHeaderValue,
         .environment = "KELO_SESSION"},
        {.name = "--user",
         .help = "Sign in as this user, at once or when the session is refused",
         .valueName = "NAME"},
        {.name = "--password",
         .help = "The user's password; - reads it from standard input. If it is not given, "
                 "KELO_PASSWORD is used, or kelo asks for it without echo",
         .valueName = "PASSWORD",
         .needed = "--user"},
        {.name = "--pin",
         .help = "The service's certificate (PEM); no other is accepted",
         .form = Form::File,
         .valueName = "FILE",
         .environment = "KELO_PIN"},
        {.name = "--language",
         .help = "Languages of the responses, the preferred one first",
         .valueName = "LANGUAGES",
         .defaultValue = usual.language,
         .check = checkHeaderValue},
        {.name = "--color",
         .help = "Colours: auto, always or never; auto is on a terminal, unless NO_COLOR is set",
         .valueName = "WHEN",
         .defaultValue = "auto",
         .choices = {"auto", "always", "never"}},
        flagFor("--json", "Print JSON, one object per line"),
        flagFor("--verbose", "Print each request on standard error"),
        {.name = "--trace",
         .help = "Write what each request takes to this file, for the trace viewer of a browser",
         .form = Form::File,
         .valueName = "FILE"},
        flagFor("--no-input", "Never ask anything, even on a terminal")};
}

Options commonOptions(const Arguments& arguments) {
    return {.host = arguments.text("--host"),
            .session = arguments.text("--session"),
            .user = arguments.text("--user"),
            .password = arguments.text("--password"),
            .pin = arguments.text("--pin"),
            .language = arguments.text("--language"),
            .json = arguments.has("--json"),
            .verbose = arguments.has("--verbose"),
            .trace = arguments.text("--trace"),
            .noInput = arguments.has("--no-input")};
}

} // namespace KeloHost
