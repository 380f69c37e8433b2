#include "Output.hpp"

#include <cstdio>

namespace KeloHost {

using namespace KeloAPI;

void Output::write(const Parameters& fields, const Lines& lines) const {
    if (_json) {
        print(jsonLine(fields));
    } else {
        say(lines);
    }
}

void Output::say(const Lines& lines) const {
    if (_json) {
        return;
    }
    std::string text;
    for (const Line& line : lines) {
        text += line.printed() + "\n";
    }
    print(text);
}

std::string Output::jsonLine(const Parameters& fields) {
    // The library writes JSON into request bodies; this borrows its writer.
    URLRequest request;
    ParameterEncoding::JSON.encode(request, fields);
    return std::string(request.body ? request.body->text() : "null") + "\n";
}

void Output::print(const std::string& text) {
    static_cast<void>(std::fputs(text.c_str(), stdout));
    static_cast<void>(std::fflush(stdout));
}

} // namespace KeloHost
