#include "Matrix.hpp"

namespace KeloAPI::testing {

namespace {

using JsonFaults = FaultMatrix;

/// Calls whose records the service always identifies: one without identifier ends the process.
const std::vector<std::string> identified = {"timeline", "like", "unlike", "rekelo", "unrekelo"};
/// Calls that expect one record, or a list of at least one.
const std::vector<std::string> filled = {"me", "sounds", "views", "initiate", "finalize", "status"};
/// Calls whose parser refuses a record without an identifier.
const std::vector<std::string> checked = {"sounds", "views", "initiate", "finalize", "status"};

Fault body(const std::string& row, const std::string& variant, const Rule& rule,
           const std::string& text, const std::string& fields = "") {
    return {.row = row,
            .variant = variant,
            .rule = rule,
            .strike = saying(answerOf(text, "200 OK", fields))};
}

std::vector<Fault> notJson() {
    std::vector<Fault> faults;
    const auto add = [&](const std::string& row, const std::string& variant,
                         const std::string& text) {
        faults.push_back(body(row, variant, ofParsedCalls(HTTPErrorCode::BadJson), text));
    };
    add("a page of HTML", "", "<!DOCTYPE html><html><body>Sign in to this network</body></html>");
    const char* notJson = "text that is no JSON";
    add(notJson, "words", "busy");
    add(notJson, "a blank", " ");
    add(notJson, "zeros", std::string(100, '\0'));
    add(notJson, "UTF-16", std::string("\xFF\xFE{\0}\0", 6));
    add(notJson, "no UTF-8", "{\"data\":{\"name\":\"\xC3\x28\"," + record + "}}");
    add(notJson, "a line end in a text", "{\"data\":{\"x\":\"a\nb\"," + record + "}}");
    add(notJson, "one quote", "{'data':{}}");
    add(notJson, "a comment", "{/* none */\"data\":{" + record + "}}");
    add(notJson, "no number", R"({"data":{"x":NaN,)" + record + "}}");
    add(notJson, "a number with a zero before it", R"({"data":{"x":01,)" + record + "}}");
    add(notJson, "a comma too many", "{\"data\":{" + record + ",}}");
    add(notJson, "a bracket of the other kind", "{\"data\":{" + record + "]}");
    add(notJson, "two texts", wellBody + wellBody);
    add(notJson, "more behind it", wellBody + "and more");
    const char* cut = "JSON that is cut short";
    for (const std::size_t size : {1, 4, 8, 9, 20, 100}) {
        add(cut, "after " + std::to_string(size) + " bytes", wellBody.substr(0, size));
    }
    add(cut, "before the last byte", wellBody.substr(0, wellBody.size() - 1));
    const char* deep = "JSON too deep to be read";
    add(deep, "5,000 lists",
        R"({"data":{"x":)" + std::string(5000, '[') + std::string(5000, ']') + "," + record + "}}");
    add(deep, "500,000 lists that are not closed", std::string(500'000, '['));
    std::string objects;
    for (int i = 0; i < 5000; ++i) {
        objects += "{\"data\":";
    }
    add(deep, "5,000 objects that are not closed", objects);
    return faults;
}

std::vector<Fault> notAnEnvelope() {
    std::vector<Fault> faults;
    for (const char* root :
         {"[]", "[{\"data\":{}}]", "null", "true", "5", "-1.5e300", "\"text\""}) {
        faults.push_back(body("JSON that is no object", root, ofParsedCalls(noObject), root));
    }
    for (const char* data : {"null", "true", "5", "\"text\"", "[]", "[{}]", "[[]]"}) {
        faults.push_back(body("\"data\" is of another kind", data, ofParsedCalls(noData),
                              std::string("{\"data\":") + data + "}"));
    }
    for (const char* root : {"{}", "{\"Data\":{}}", "{\"error\":\"\"}", "{\"error\":5}",
                             "{\"error\":null,\"code\":7}", "{\"error\":{\"message\":\"No.\"}}"}) {
        faults.push_back(body("there is no \"data\"", root, ofParsedCalls(noData), root));
    }
    return faults;
}

std::vector<Fault> serviceErrors() {
    std::vector<Fault> faults;
    const auto add = [&](const char* row, const std::string& text, std::int64_t code) {
        faults.push_back(body(row, text, ofParsedCalls(outcomeOf(code)), text));
    };
    const char* plain = "the service's error 7, with or without data";
    add(plain, R"({"error":"No.","code":7})", 7);
    add(plain, R"({"error":"No.","code":7,"data":null})", 7);
    add(plain, R"({"code":7,"data":{"postId":1},"error":"No."})", 7);
    add("the service's error 100", R"({"error":"No.","code":100})", 100);
    add("the service's error 103", R"({"error":"No.","code":103})", 103);
    add("the service's error 419, with and without a URL",
        R"({"error":"No.","code":419,"data":"https://service.example/captcha"})", 419);
    add("the service's error 419, with and without a URL", R"({"error":"No.","code":419})", 419);
    const char* without = "the service's error without a code that can be read";
    for (const char* code : {"", R"(,"code":"7")", R"(,"code":null)", R"(,"code":[7])"}) {
        add(without, std::string(R"({"error":"No.")") + code + "}", -1);
    }
    return faults;
}

/// The record with each of its values replaced.
std::string recordOf(const std::string& value) {
    std::string text;
    for (const char* key : {"postId", "likeId", "repostId", "mediaId", "longformId", "count",
                            "soundId", "name", "soundUrl", "username", "user"}) {
        text += (text.empty() ? "\"" : ",\"") + std::string(key) + "\":" + value;
    }
    return text;
}

std::vector<Fault> oddRecords() {
    std::vector<Fault> faults;
    const auto add = [&](const std::string& variant, const Rule& rule, const std::string& fields) {
        const char* const row = "each value of a record is ";
        faults.push_back(body(row + variant, "alone", rule, "{\"data\":{" + fields + "}}"));
        faults.push_back(
            body(row + variant, "in a list", rule, "{\"data\":{\"records\":[{" + fields + "}]}}"));
    };
    const Rule refused = Rule(ok).but(checked, noRecord);
    add("null", refused, recordOf("null"));
    add("a list", refused, recordOf("[]"));
    add("an object", refused, recordOf("{}"));
    const Rule noViews = Rule(ok).but({"views"}, noRecord);
    add("a text", noViews, recordOf("\"text\""));
    add("a number", noViews, recordOf("-5"));
    add("a number beyond all", noViews, recordOf("1e400"));
    add("true", noViews, recordOf("true"));

    const Rule noOthers = Rule(ok).but(identified, ruledOut);
    const char* const empty = "a list with an empty record";
    faults.push_back(body(empty, "", noOthers.but(checked, noRecord),
                          "{\"data\":{\"records\":[{" + record + "},{}]}}"));
    const Rule ignored = ok;
    for (const char* records : {"null", "5", "{}", "[5]", "[{},null]", "[[]]", "\"text\""}) {
        faults.push_back(
            body("\"records\" beside a record is no list of objects", records, ignored,
                 std::string("{\"data\":{\"records\":") + records + "," + record + "}}"));
    }
    const Rule emptyData = Rule(ok).but(filled, ruledOut);
    faults.push_back(body("\"data\" is empty", "", emptyData, "{\"data\":{}}"));
    return faults;
}

std::vector<Fault> soundButOdd() {
    std::vector<Fault> faults;
    const auto add = [&](const char* variant, const std::string& text) {
        faults.push_back(body("odd JSON that is sound", variant, ok, text));
    };
    add("a mark of the byte order", "\xEF\xBB\xBF" + wellBody);
    add("blanks around it", "\r\n\t " + wellBody + " \n");
    add("an error that is none", R"({"error":"","code":7,"data":{)" + record + "}}");
    add("an error that is no text", R"({"error":{},"code":7,"data":{)" + record + "}}");
    add("a number beyond 64 bits",
        R"({"data":{"x":123456789012345678901234567890,)" + record + "}}");
    add("a number beyond all", R"({"data":{"x":-1e999,)" + record + "}}");
    add("900 lists",
        R"({"data":{"x":)" + std::string(900, '[') + std::string(900, ']') + "," + record + "}}");
    add("100,000 elements",
        R"({"data":{"x":[0)" + std::string(200'000, ' ') + "]," + record + "}}");
    add("a text of 500,000 characters",
        R"({"data":{"x":")" + std::string(500'000, 'x') + "\"," + record + "}}");
    add("a zero in a text", R"({"data":{"x":"a\u0000b",)" + record + "}}");
    add("half a surrogate", R"({"data":{"x":"\ud800",)" + record + "}}");
    add("two of a key", "{\"data\":{" + record + "," + record + "}}");
    const Rule noText =
        Rule(ok).but({CallKind::Text, CallKind::Loops}, outcomeOf(HTTPErrorCode::TextEncoding));
    for (const char* charset : {"utf-16", "x-none", "../../etc/passwd", "utf-8//IGNORE"}) {
        faults.push_back(
            {.row = "a character set that is not the text's, or none",
             .variant = charset,
             .rule = noText,
             .strike = saying("HTTP/1.1 200 OK\r\nContent-Type: text/plain; charset=" +
                              std::string(charset) + "\r\nContent-Length: " +
                              std::to_string(wellBody.size()) + "\r\n\r\n" + wellBody)});
    }
    return faults;
}

TEST_F(JsonFaults, EndEachCallOnceAndAsTheyShould) {
    std::vector<Fault> faults = notJson();
    append(faults, notAnEnvelope());
    append(faults, serviceErrors());
    append(faults, oddRecords());
    append(faults, soundButOdd());
    run("JSON", faults);
}

} // namespace

} // namespace KeloAPI::testing
