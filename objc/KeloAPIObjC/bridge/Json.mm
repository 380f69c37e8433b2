#include <KeloAPIObjC/bridge/Values.hpp>

#include <cmath>
#include <string>

namespace KeloBridge {

using namespace KeloAPI;

namespace {

/// How deep the library's reader goes.
constexpr int deepest = 1000;

NSArray *list(const JsonArray &values) {
    NSMutableArray *made = [NSMutableArray arrayWithCapacity:values.size()];
    for (const JsonValue element : values) {
        [made addObject:value(element)];
    }
    return made;
}

/// Writes Foundation's objects as JSON. By hand, because the Foundation's own writer raises for
/// what JSON cannot tell, and rounds some numbers.
class JsonWriter {
public:
    void write(id value, int depth) {
        if ([value isKindOfClass:[NSString class]]) {
            writeText(value);
        } else if ([value isKindOfClass:[NSNumber class]]) {
            writeNumber(number(static_cast<NSNumber *>(value)));
        } else if ([value isKindOfClass:[NSDictionary class]] && depth < deepest) {
            writeObject(value, depth);
        } else if ([value isKindOfClass:[NSArray class]] && depth < deepest) {
            writeList(value, depth);
        } else {
            _text += "null";
        }
    }

    const std::string &text() const { return _text; }

private:
    void writeText(NSString *string) {
        constexpr const char *digits = "0123456789abcdef";
        _text += '"';
        for (const char c : KeloBridge::text(string)) {
            const auto byte = static_cast<unsigned char>(c);
            if (byte < 0x20) {
                _text += "\\u00";
                _text += digits[byte >> 4U];
                _text += digits[byte & 15U];
                continue;
            }
            if (c == '"' || c == '\\') {
                _text += '\\';
            }
            _text += c;
        }
        _text += '"';
    }

    void writeNumber(const Number &known) {
        if (known.kind() == Number::Kind::Boolean) {
            _text += known.boolValue() ? "true" : "false";
        } else {
            _text += std::isfinite(known.doubleValue()) ? known.stringValue() : "null";
        }
    }

    void writeObject(NSDictionary *object, int depth) {
        _text += '{';
        bool isFirst = true;
        NSEnumerator *keys = [object keyEnumerator];
        for (id key = [keys nextObject]; key != nil; key = [keys nextObject]) {
            if (![key isKindOfClass:[NSString class]]) {
                continue;
            }
            separate(isFirst);
            writeText(key);
            _text += ':';
            write([object objectForKey:key], depth + 1);
        }
        _text += '}';
    }

    void writeList(NSArray *list, int depth) {
        _text += '[';
        bool isFirst = true;
        NSEnumerator *elements = [list objectEnumerator];
        for (id element = [elements nextObject]; element != nil; element = [elements nextObject]) {
            separate(isFirst);
            write(element, depth + 1);
        }
        _text += ']';
    }

    void separate(bool &isFirst) {
        if (!isFirst) {
            _text += ',';
        }
        isFirst = false;
    }

    std::string _text;
};

} // namespace

id value(JsonValue value) {
    if (const auto known = value.text()) {
        return string(*known);
    }
    if (const auto known = value.number()) {
        return number(*known);
    }
    if (const auto known = value.object()) {
        return dictionary(*known);
    }
    if (const auto known = value.array()) {
        return list(*known);
    }
    return [NSNull null];
}

NSDictionary *dictionary(const JsonObject &object) {
    NSMutableDictionary *made = [NSMutableDictionary dictionaryWithCapacity:object.size()];
    for (const auto &[key, member] : object) {
        NSString *name = string(key);
        if ([made objectForKey:name] == nil) { // the first one counts
            [made setObject:value(member) forKey:name];
        }
    }
    return made;
}

JsonDocument document(NSDictionary *dictionary) {
    JsonWriter writer;
    writer.write(dictionary == nil ? [NSDictionary dictionary] : dictionary, 0);
    auto parsed = JsonDocument::parse(writer.text());
    // Only what is no dictionary at all comes to this.
    if (!parsed || !parsed.value().root().object()) {
        [NSException raise:NSInvalidArgumentException format:@"no JSON object"];
    }
    return std::move(parsed.value());
}

} // namespace KeloBridge
