#include "Matrix.hpp"
#include "support/Gzip.hpp"

namespace KeloAPI::testing {

namespace {

using BodyFaults = FaultMatrix;

const std::string okLine = "HTTP/1.1 200 OK\r\n";
const std::string chunkedHead = okLine + "Transfer-Encoding: chunked\r\n\r\n";
constexpr std::size_t twoHundredMB = 200'000'000;

std::string chunk(const std::string& bytes) {
    std::array<char, 20> size{};
    std::snprintf(size.data(), size.size(), "%zx\r\n", bytes.size());
    return size.data() + bytes + "\r\n";
}

std::string packedAnswer(const std::string& packed, const std::string& coding = "gzip") {
    return answerOf(packed, "200 OK", "Content-Encoding: " + coding + "\r\n");
}

/// The body in two chunks, with a field behind it.
std::string chunkedAnswer() {
    return chunkedHead + chunk(wellBody.substr(0, 40)) + chunk(wellBody.substr(40)) +
           "0\r\nX-Trailer: t\r\n\r\n";
}

std::vector<Fault> brokenBodies() {
    const std::string plain = answerOf(wellBody);
    const std::size_t head = plain.size() - wellBody.size();
    auto faults = cutting("within a body of known length", plain,
                          {head, head + 1, head + 80, plain.size() - 1});
    // Within the size, behind it, within the chunk, before and within its line end; behind both
    // chunks, within the last size, the trailer, and before the empty line at the end.
    const std::string chunks = chunkedAnswer();
    const std::size_t first = chunkedHead.size();
    const std::size_t last = chunks.size() - 21;
    append(faults, cutting("within a body of chunks", chunks,
                           {first, first + 1, first + 4, first + 20, first + 44, first + 45, last,
                            last + 1, last + 3, last + 9, chunks.size() - 2}));
    const std::string packed = packedAnswer(gzip(wellBody));
    const std::size_t packedHead = packed.find("\r\n\r\n") + 4;
    append(faults, cutting("within a packed body", packed,
                           {packedHead + 1, packedHead + 60, packed.size() - 4}));
    const Leave toTheEnd[] = {Leave::Farewell, Leave::Close, Leave::Reset};
    for (const Leave how : toTheEnd) {
        const bool isWhole = how == Leave::Farewell;
        const char* name = isWhole               ? "closed with TLS's farewell, which is its end"
                           : how == Leave::Close ? "closed"
                                                 : "reset";
        faults.push_back({.row = std::string("within a body of unknown length: ") + name,
                          .rule = isWhole ? Rule(ok) : Rule(HTTPErrorCode::ConnectionLost),
                          .strike = saying(okLine + "\r\n" + wellBody, how)});
    }
    return faults;
}

std::vector<Fault> brokenTLS() {
    const auto fault = [](const char* variant, const std::string& record) {
        return Fault{.row = "within the body: TLS breaks",
                     .variant = variant,
                     .rule = HTTPErrorCode::ConnectionLost,
                     .strike = [record](const Encounter& encounter) {
                         encounter.connection.write(answerOf(wellBody).substr(0, 100));
                         ::send(encounter.connection.socket(), record.data(), record.size(),
                                MSG_NOSIGNAL);
                         return leave(encounter.connection, Leave::Silence);
                     }};
    };
    return {fault("a record that is not the server's",
                  std::string("\x17\x03\x03\0\x40", 5) + std::string(64, 'x')),
            fault("bytes that are no record", std::string(64, 'x'))};
}

std::vector<Fault> lengths() {
    const auto withLength = [](const std::string& fields) {
        return okLine + fields + "\r\n" + wellBody;
    };
    const auto refused = [&](const char* variant, const std::string& fields) {
        return Fault{.row = "a length that cannot be",
                     .variant = variant,
                     .rule = HTTPErrorCode::BadServerResponse,
                     .strike = saying(withLength(fields), Leave::Silence)};
    };
    const std::string right = std::to_string(wellBody.size());
    const std::string length = "Content-Length: ";
    return {
        refused("two that differ", length + "5\r\n" + length + right + "\r\n"),
        refused("two that differ, the right one first", length + right + "\r\n" + length + "5\r\n"),
        refused("a list that differs", length + "5, " + right + "\r\n"),
        refused("negative", length + "-1\r\n"),
        refused("no number", length + "many\r\n"),
        refused("a number and more", length + right + "x\r\n"),
        refused("empty", length + "\r\n"),
        refused("beyond 64 bits", length + "99999999999999999999999\r\n"),
        {.row = "a length twice",
         .rule = ok,
         .strike = saying(withLength(length + right + "\r\n" + length + right + "\r\n"))},
        {.row = "a length beside chunks, which count",
         .rule = ok,
         .strike = saying(okLine + length + "5\r\nTransfer-Encoding: chunked\r\n\r\n" +
                          chunk(wellBody) + "0\r\n\r\n")},
        {.row = "a length that is too short",
         .rule = ofParsedCalls(HTTPErrorCode::BadJson),
         .strike = saying(withLength(length + "20\r\n"))},
        {.row = "a length of zero before a body",
         .rule = ofParsedCalls(HTTPErrorCode::EmptyBody),
         .strike = saying(withLength(length + "0\r\n"))}};
}

std::vector<Fault> chunkings() {
    const auto refused = [](const char* variant, const std::string& bytes) {
        return Fault{.row = "chunks that cannot be",
                     .variant = variant,
                     .rule = HTTPErrorCode::BadServerResponse,
                     .strike = saying(chunkedHead + bytes, Leave::Silence)};
    };
    return {refused("a size that is no number", "many\r\n" + wellBody),
            refused("no size", "\r\n" + wellBody),
            refused("a negative size", "-5\r\n" + wellBody),
            refused("a size beyond 64 bits", "FFFFFFFFFFFFFFFFF\r\n" + wellBody),
            refused("a chunk longer than its size", "5\r\n" + wellBody + "\r\n"),
            {.row = "a trailer without end",
             .rule = HTTPErrorCode::BadServerResponse,
             .strike = sayingOn(chunkedHead + chunk(wellBody) + "0\r\n",
                                "X-Some: " + std::string(1000, 'x') + "\r\n")},
            {.row = "a note on a chunk without end",
             .rule = HTTPErrorCode::TimedOut,
             .strike = sayingOn(chunkedHead + "5;note=", std::string(16384, 'x'))},
            {.row = "notes on chunks, and fields behind them",
             .rule = ok,
             .strike = saying(chunkedHead + "5;note=\"x\"\r\n" + wellBody.substr(0, 5) + "\r\n" +
                              chunk(wellBody.substr(5)) + "000\r\nX: t\r\nY: t\r\n\r\n")}};
}

std::vector<Fault> codings() {
    std::vector<Fault> faults;
    for (const char* coding : {"x-none", "gzip", "gzip, chunked", "chunked, chunked"}) {
        faults.push_back({.row = "a transfer coding that was not offered",
                          .variant = coding,
                          .rule = HTTPErrorCode::BadServerResponse,
                          .strike = saying(okLine + "Transfer-Encoding: " + coding + "\r\n\r\n" +
                                               chunk(gzip(wellBody)) + "0\r\n\r\n",
                                           Leave::Silence)});
    }
    return faults;
}

std::vector<Fault> packings() {
    const std::string packed = gzip(wellBody);
    const auto flipped = [&](std::size_t fromEnd) {
        std::string wrong = packed;
        wrong.at(wrong.size() - fromEnd) = static_cast<char>(wrong.at(wrong.size() - fromEnd) ^ 1);
        return packedAnswer(wrong);
    };
    std::vector<Fault> faults;
    const auto refuse = [&](const char* row, const char* variant, const std::string& bytes) {
        faults.push_back({.row = row,
                          .variant = variant,
                          .rule = HTTPErrorCode::BadServerResponse,
                          .strike = saying(bytes)});
    };
    const char* bad = "gzip that cannot be unpacked";
    refuse(bad, "no gzip", packedAnswer(wellBody));
    refuse(bad, "cut in its header", packedAnswer(packed.substr(0, 5)));
    refuse(bad, "cut in its data", packedAnswer(packed.substr(0, packed.size() / 2)));
    refuse(bad, "cut in its checksum", packedAnswer(packed.substr(0, packed.size() - 1)));
    refuse(bad, "a wrong checksum", flipped(8));
    refuse(bad, "a wrong size", flipped(4));
    refuse(bad, "a wrong bit", flipped(packed.size() / 2));
    refuse(bad, "more behind it", packedAnswer(packed + "more"));
    const char* unknown = "a packing that was not offered";
    refuse(unknown, "br", packedAnswer(wellBody, "br"));
    refuse(unknown, "deflate", packedAnswer(wellBody, "deflate"));
    refuse(unknown, "gzip twice", packedAnswer(gzip(packed), "gzip, gzip"));
    refuse(unknown, "of no name", packedAnswer(wellBody, "unheard-of"));
    faults.push_back({.row = "an empty body said to be packed",
                      .rule = ofParsedCalls(HTTPErrorCode::EmptyBody),
                      .strike = saying(packedAnswer(""))});
    return faults;
}

std::vector<Fault> largeBodies() {
    const Rule tooLarge = Rule(HTTPErrorCode::BodyTooLarge).but({CallKind::File}, ok);
    const std::string piece(16384, ' ');
    return {{.row = "200 MB in 200 kB of gzip",
             .rule = tooLarge,
             .strike = saying(packedAnswer(gzip(std::string(twoHundredMB, ' '))))},
            {.row = "200 MB of known length",
             .rule = tooLarge,
             .strike =
                 [piece](const Encounter& encounter) {
                     bool goesOn = encounter.connection.write(
                         okLine + "Content-Length: " + std::to_string(twoHundredMB) + "\r\n\r\n");
                     for (std::size_t left = twoHundredMB; goesOn && left > 0;) {
                         const std::size_t size = std::min(left, piece.size());
                         goesOn = encounter.connection.write(piece.substr(0, size));
                         left -= size;
                     }
                     return goesOn;
                 }},
            {.row = "chunks without end, silent after 50 MB",
             .rule = tooLarge.but({CallKind::File}, outcomeOf(HTTPErrorCode::TimedOut)),
             .strike = sayingOn(chunkedHead, chunk(piece), twoHundredMB / 4)},
            {.row = "a body byte by byte, without end",
             .rule = HTTPErrorCode::TimedOut,
             .strike =
                 [](const Encounter& encounter) {
                     encounter.connection.write(okLine + "Content-Length: 1000000\r\n\r\n");
                     return dripping(" ")(encounter);
                 },
             .isSlow = true}};
}

TEST_F(BodyFaults, EndEachCallOnceAndAsTheyShould) {
    std::vector<Fault> faults = brokenBodies();
    append(faults, brokenTLS());
    append(faults, lengths());
    run("body", faults);
}

TEST_F(BodyFaults, InCodingsEndEachCallOnceAndAsTheyShould) {
    std::vector<Fault> faults = chunkings();
    append(faults, codings());
    append(faults, packings());
    run("codings", faults);
}

TEST_F(BodyFaults, OfAnySizeEndEachCallOnceAndAsTheyShould) {
    run("large bodies", largeBodies());
}

} // namespace

} // namespace KeloAPI::testing
