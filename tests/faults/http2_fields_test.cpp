#include "HTTP2Fault.hpp"
#include "Matrix.hpp"

namespace KeloAPI::testing {

namespace {

using HTTP2FieldFaults = FaultMatrix;

class HeadRule : public RuledFaults {
public:
    using RuledFaults::RuledFaults;

    /// A response with this field behind its status.
    void field(const std::string& name, const std::string& key, const std::string& value) {
        addHead(name, Frames::status200 + Frames::field(key, value));
    }
    /// A response with these fields behind its body.
    void trailer(const std::string& name, const std::string& fields,
                 std::uint8_t flags = Frames::endOfHeaders | Frames::endOfStream) {
        add(name, [=](std::uint32_t stream) {
            return head(stream) + dataOf(stream, wellBody, false) + head(stream, fields, flags);
        });
    }
};

std::string statusField(const std::string& value) {
    return Frames::field(":status", value);
}

std::vector<Fault> statusesOfHeads() {
    HeadRule heads(
        "A head begins with one status of three digits and has no other field of its kind.", lost);
    heads.addHead("no status", Frames::field("x", "y"));
    heads.addHead("no field at all", "");
    heads.addHead("a status that is not a number", statusField("abc"));
    heads.addHead("an empty status", statusField(""));
    heads.addHead("a status of two digits", statusField("20"));
    heads.addHead("a status of four digits", statusField("2000"));
    heads.addHead("a negative status", statusField("-20"));
    heads.addHead("101, which HTTP/2 does not have", statusField("101"));
    heads.addHead("two statuses", std::string(Frames::status200) + Frames::status200);
    heads.addHead("a status behind a field", Frames::field("x", "y") + Frames::status200);
    heads.field("a method", ":method", "GET");
    heads.field("a path", ":path", "/");
    heads.field("a scheme", ":scheme", "https");
    heads.field("a field of that kind that nobody knows", ":some", "x");
    return heads.all;
}

std::vector<Fault> fieldNames() {
    HeadRule heads("A field's name is in lower case, and is not one of a connection.", lost);
    heads.field("a capital letter", "X-Some", "y");
    heads.field("a capital letter at the end", "x-somE", "y");
    heads.field("Connection", "connection", "close");
    heads.field("Keep-Alive", "keep-alive", "timeout=5");
    heads.field("Proxy-Connection", "proxy-connection", "keep-alive");
    heads.field("Transfer-Encoding", "transfer-encoding", "chunked");
    heads.field("Upgrade", "upgrade", "h2c");
    heads.field("TE of something else than trailers", "te", "gzip");
    return heads.all;
}

std::vector<Fault> lengthsAndEnds() {
    HeadRule heads(
        "A body has the length that its head says, and stands between head and trailers.", lost);
    for (const char* length : {"5", "1000", "-1", "many", ""}) {
        heads.field(std::string("a length of \"") + length + '"', "content-length", length);
    }
    const std::string right = std::to_string(wellBody.size());
    heads.addHead("two lengths", Frames::status200 + Frames::field("content-length", right) +
                                     Frames::field("content-length", "5"));
    heads.add("a length, and no body", [](std::uint32_t stream) {
        return head(stream, Frames::status200 + Frames::field("content-length", "5"),
                    Frames::endOfHeaders | Frames::endOfStream);
    });
    heads.add("a body before its head",
              [](std::uint32_t stream) { return dataOf(stream, wellBody); });
    heads.add("an interim response, and the end", [](std::uint32_t stream) {
        return head(stream, statusField("103"), Frames::endOfHeaders | Frames::endOfStream);
    });
    heads.add("a body behind an interim response", [](std::uint32_t stream) {
        return head(stream, statusField("103")) + dataOf(stream, wellBody);
    });
    heads.trailer("trailers that are not the end", Frames::field("x-trailer", "t"),
                  Frames::endOfHeaders);
    heads.trailer("trailers with a status", Frames::status200);
    heads.trailer("trailers with a path", Frames::field(":path", "/"));
    heads.trailer("trailers with a capital letter", Frames::field("X-Trailer", "t"));
    return heads.all;
}

std::vector<Fault> fieldLetters() {
    HeadRule heads("A field has a name, and name and value are of letters that they may have.",
                   lost);
    heads.field("an empty name", "", "x");
    heads.field("a space in a name", "x some", "y");
    heads.field("a colon in a name", "x:some", "y");
    heads.field("a zero byte in a name", std::string("x\0s", 3), "y");
    heads.field("a line's end in a name", "x\r\ny", "z");
    heads.field("a byte beyond ASCII in a name", "x\xC3\xA9", "y");
    heads.field("a zero byte in a value", "x", std::string("y\0z", 3));
    heads.field("a line's end in a value", "x", "y\r\nset-cookie: z=1");
    heads.field("a return in a value", "x", "y\rz");
    return heads.all;
}

std::vector<Fault> allowedFields() {
    HeadRule heads("What is allowed is read, and spaces around a value are overlooked.", ok);
    heads.field("a space before a value", "x-some", " y");
    heads.field("a space behind a value", "x-some", "y ");
    heads.field("an empty value", "x-some", "");
    heads.field("a value beyond ASCII", "x-some", "\xC3\xA9");
    heads.field("a tab in a value", "x-some", "y\tz");
    heads.field("the right length", "content-length", std::to_string(wellBody.size()));
    heads.addHead("a status that is written out", statusField("200"));
    heads.addHead("a field twice",
                  Frames::status200 + Frames::field("x-some", "y") + Frames::field("x-some", "z"));
    heads.add("interim responses", [](std::uint32_t stream) {
        return head(stream, statusField("100")) + head(stream, statusField("103")) +
               Frames::response(stream, wellBody);
    });
    heads.trailer("trailers", Frames::field("x-trailer", "t"));
    heads.trailer("trailers without a field", "");
    return heads.all;
}

TEST_F(HTTP2FieldFaults, EndEachCallOnceAndAsTheyShould) {
    std::vector<Fault> faults = statusesOfHeads();
    append(faults, fieldNames());
    append(faults, lengthsAndEnds());
    append(faults, fieldLetters());
    append(faults, allowedFields());
    run("HTTP/2 fields", faults, &casesOf);
}

} // namespace

} // namespace KeloAPI::testing
