#pragma once

#include "Records.hpp"

#include <memory>
#include <string>
#include <vector>

namespace KeloHost {

/// Standard output: JSON for programs, one object per line, or text for people. Each write is
/// flushed. A failed one sets the stream's error flag, which `main` checks at the end.
class Output {
public:
    explicit Output(bool json)
        : _json(json) {}

    bool isJson() const { return _json; }

    /// One thing: its fields, null for an absent one, or its lines.
    void write(const KeloAPI::Parameters& fields, const Lines& lines) const;
    /// A list of things that `fieldsOf` knows, or its lines, which `linesOf` makes.
    template <class Item, class LinesOf>
    void writeAll(const std::vector<std::shared_ptr<Item>>& items, LinesOf linesOf) const;
    /// For people only.
    void say(const Lines& lines) const;
    /// A path, printed unchanged.
    void writePath(const std::string& name, const std::string& path) const {
        print(_json ? jsonLine({{name, path}}) : path + "\n");
    }

    /// The fields as JSON, with the line's end.
    static std::string jsonLine(const KeloAPI::Parameters& fields);

private:
    static void print(const std::string& text);

    const bool _json;
};

template <class Item, class LinesOf>
void Output::writeAll(const std::vector<std::shared_ptr<Item>>& items, LinesOf linesOf) const {
    if (!_json) {
        say(linesOf(items));
        return;
    }
    std::string text;
    for (const auto& item : items) {
        text += jsonLine(fieldsOf(*item));
    }
    print(text);
}

} // namespace KeloHost
