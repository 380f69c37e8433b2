#include "Nginx.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <thread>

namespace KeloAPI::testing {

namespace {

constexpr const char* program = "/usr/sbin/nginx";

sockaddr_in loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

int freePort() {
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    const bool bound =
        ::bind(socket, generic, size) == 0 && ::getsockname(socket, generic, &size) == 0;
    ::close(socket);
    return bound ? ntohs(address.sin_port) : 0;
}

bool answers(int port) {
    const sockaddr_in address = loopback(port);
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool connected =
        ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::close(socket);
    return connected;
}

std::filesystem::path temporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kelo-nginx-XXXXXX").string();
    return ::mkdtemp(pattern.data());
}

} // namespace

bool Nginx::isInstalled() {
    return ::access(program, X_OK) == 0;
}

Nginx::Nginx(const TestCertificate& certificate)
    : _folder(temporaryFolder())
    , _port(freePort())
    , _serialPort(freePort())
    , _slowBody(20'000, 's') {
    std::ofstream(_folder / "certificate.pem") << certificate.pem();
    std::ofstream(_folder / "key.pem") << certificate.keyPem();
    std::filesystem::create_directory(_folder / "files");
    std::ofstream(_folder / "slow") << _slowBody;
    std::ofstream(_folder / "stalling") << _slowBody;
    std::ofstream(_folder / "nginx.conf") << configuration();

    const std::string prefix = _folder.string() + "/";
    const std::string log = prefix + "error.log";
    std::array<const char*, 8> arguments = {program,      "-p", prefix.c_str(), "-c",
                                            "nginx.conf", "-e", log.c_str(),    nullptr};
    posix_spawn(&_process, program, nullptr, nullptr, const_cast<char* const*>(arguments.data()),
                environ);
    for (int i = 0; i < 1000 && !answers(_port); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

Nginx::~Nginx() {
    if (_process > 0) {
        ::kill(_process, SIGTERM);
        ::waitpid(_process, nullptr, 0);
    }
    std::error_code ignored;
    std::filesystem::remove_all(_folder, ignored);
}

bool Nginx::isServing() const {
    return _process > 0 && answers(_port);
}

std::string Nginx::url(const std::string& path) const {
    return "https://localhost:" + std::to_string(_port) + path;
}

std::string Nginx::serialUrl(const std::string& path) const {
    return "https://localhost:" + std::to_string(_serialPort) + path;
}

std::string Nginx::configuration() const {
    return "daemon off; master_process off; pid nginx.pid;\n"
           "events { worker_connections 512; }\n"
           "http {\n"
           "  access_log off; client_max_body_size 100m;\n"
           "  client_body_temp_path body; proxy_temp_path proxy; fastcgi_temp_path fastcgi;\n"
           "  uwsgi_temp_path uwsgi; scgi_temp_path scgi;\n"
           "  ssl_certificate certificate.pem; ssl_certificate_key key.pem;\n"
           "  add_header X-Connection $connection; add_header X-Protocol $server_protocol;\n"
           "  add_header X-Echo \"[$http_x_empty][$http_x_text]\";\n" +
           server(_port, "http2") + server(_serialPort, "") +
           "  server {\n"
           "    listen unix:" +
           _folder.string() +
           "/behind.sock;\n"
           "    location / { default_type application/json; return 200 '{\"data\":{}}'; }\n"
           "  }\n"
           "}\n";
}

std::string Nginx::server(int port, const std::string& protocol) const {
    const std::string root = _folder.string();
    return "  server {\n"
           "    listen 127.0.0.1:" +
           std::to_string(port) + " ssl " + protocol +
           ";\n"
           "    http2_max_concurrent_streams 128; absolute_redirect off;\n"
           "    location /quick { return 200 quick; }\n"
           "    location /moved { return 302 /quick; }\n"
           "    location /slow { root " +
           root +
           "; limit_rate 15k; }\n"
           "    location /stalling { root " +
           root +
           "; limit_rate 1; }\n"
           "    location /files { root " +
           root +
           "; dav_methods PUT; }\n"
           "    location /upload { proxy_pass http://unix:" +
           root +
           "/behind.sock; proxy_pass_request_body off; proxy_set_header Content-Length \"\";\n"
           "      client_body_buffer_size 16m; }\n"
           "  }\n";
}

} // namespace KeloAPI::testing
