#pragma once

#include "RawServer.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace KeloAPI::testing {

/// One HTTP/2 connection, frame by frame, over the server's end of TLS.
class FrameConnection {
public:
    enum Type : std::uint8_t {
        Data = 0,
        Headers = 1,
        Priority = 2,
        ResetStream = 3,
        Settings = 4,
        PushPromise = 5,
        Ping = 6,
        GoAway = 7,
        WindowUpdate = 8,
        Continuation = 9
    };
    static constexpr std::uint8_t acknowledged = 1;
    static constexpr std::uint8_t endOfStream = 1;
    static constexpr std::uint8_t endOfHeaders = 4;
    static constexpr std::uint8_t padded = 8;
    static constexpr std::uint8_t hasPriority = 0x20;

    /// Lets the client send so many bytes on each stream before it is given more.
    explicit FrameConnection(RawConnection& connection, std::uint32_t window = 0x7FFFFFFF)
        : _connection(connection) {
        _open = read(std::string_view(preface).size()) == preface;
        write(Settings, 0, 0, std::string("\0\4", 2) + number(window));
        write(WindowUpdate, 0, 0, number(0x40000000));
    }

    /// A number as frames have it, most significant byte first.
    static std::string number(std::uint32_t value) {
        return {static_cast<char>(value >> 24U), static_cast<char>(value >> 16U),
                static_cast<char>(value >> 8U), static_cast<char>(value)};
    }

    static std::string frame(std::uint8_t type, std::uint8_t flags, std::uint32_t stream,
                             const std::string& payload) {
        std::string frame = number(static_cast<std::uint32_t>(payload.size())).substr(1);
        frame += static_cast<char>(type);
        frame += static_cast<char>(flags);
        return frame + number(stream) + payload;
    }

    /// A field of a head, neither compressed nor remembered. Shorter than 127 bytes each.
    static std::string field(const std::string& name, const std::string& value) {
        return std::string(1, '\0') + static_cast<char>(name.size()) + name +
               static_cast<char>(value.size()) + value;
    }

    /// A whole response.
    static std::string response(std::uint32_t stream, const std::string& body) {
        return frame(Headers, endOfHeaders, stream, status200) +
               frame(Data, endOfStream, stream, body);
    }

    static constexpr const char* status200 = "\x88"; ///< ":status: 200", from the static table.

    /// Reads up to the end of a request; the stream it came on, or 0 when the client has gone.
    std::uint32_t readRequest() {
        while (_open) {
            const std::string head = read(9);
            if (!_open) {
                break;
            }
            const std::size_t size = byte(head, 0) << 16U | byte(head, 1) << 8U | byte(head, 2);
            read(size);
            if (byte(head, 3) == Settings && byte(head, 4) == 0) {
                write(Settings, acknowledged, 0, "");
            }
            const bool ofRequest = byte(head, 3) == Headers || byte(head, 3) == Data;
            if (ofRequest && (byte(head, 4) & endOfStream) != 0) {
                return byte(head, 7) << 8U | byte(head, 8);
            }
        }
        return 0;
    }

    /// A response without a body.
    void answer(std::uint32_t stream) {
        write(Headers, endOfStream | endOfHeaders, stream, status200);
    }

    /// Says that streams beyond `last` have not been and will not be looked at.
    void goAway(std::uint32_t last, std::uint32_t error) {
        write(GoAway, 0, 0, number(last) + number(error));
    }

    /// Sends what no server may: the connection is of no more use to the client.
    void breakProtocol() { write(Data, 0, 0, "x"); }

    /// False when the client has gone.
    bool write(std::string_view bytes) { return _open = _open && _connection.write(bytes); }
    bool write(std::uint8_t type, std::uint8_t flags, std::uint32_t stream,
               const std::string& payload) {
        return write(frame(type, flags, stream, payload));
    }

    void waitForClose() { _connection.waitForClose(); }
    RawConnection& connection() const { return _connection; }

    /// Has TLS choose HTTP/2 where the client offers it.
    static void offer(SSL_CTX* context) { SSL_CTX_set_alpn_select_cb(context, &select, nullptr); }
    static bool isSpokenOn(SSL* session) {
        const unsigned char* protocol = nullptr;
        unsigned size = 0;
        SSL_get0_alpn_selected(session, &protocol, &size);
        return std::string_view(reinterpret_cast<const char*>(protocol), size) == "h2";
    }

private:
    static constexpr const char* preface = "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n";

    static int select(SSL* /*session*/, const unsigned char** selected, unsigned char* size,
                      const unsigned char* offered, unsigned length, void* /*unused*/) {
        const std::string_view list(reinterpret_cast<const char*>(offered), length);
        const auto at = list.find("\2h2");
        if (at == std::string_view::npos) {
            return SSL_TLSEXT_ERR_NOACK;
        }
        *selected = offered + at + 1;
        *size = 2;
        return SSL_TLSEXT_ERR_OK;
    }

    static std::uint32_t byte(const std::string& bytes, std::size_t at) {
        return static_cast<std::uint8_t>(bytes[at]);
    }

    std::string read(std::size_t size) {
        std::string bytes;
        while (_open && bytes.size() < size) {
            const std::string more = _connection.read(size - bytes.size());
            _open = !more.empty();
            bytes += more;
        }
        return bytes;
    }

    RawConnection& _connection;
    bool _open = true;
};

} // namespace KeloAPI::testing
