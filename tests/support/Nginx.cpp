#include "Nginx.hpp"

#include "Loopback.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

namespace KeloAPI::testing {

namespace {

constexpr const char* program = "/usr/sbin/nginx";

constexpr const char* configuration = R"(
daemon off; user root root; pid nginx.pid;
events { worker_connections 512; }
http {
  access_log off; client_max_body_size 100m;
  client_body_temp_path body; proxy_temp_path proxy; fastcgi_temp_path fastcgi;
  uwsgi_temp_path uwsgi; scgi_temp_path scgi;
  ssl_certificate certificate.pem; ssl_certificate_key key.pem;
  add_header X-Connection $connection; add_header X-Protocol $server_protocol;
  add_header X-Echo "[$http_x_empty][$http_x_text]";
  server {
    listen 127.0.0.1:PORT ssl http2;
    http2_max_concurrent_streams 128;
    include locations;
  }
  server {
    listen 127.0.0.1:SERIAL ssl;
    include locations;
  }
  server {
    listen unix:FOLDER/behind.sock;
    location / { default_type application/json; return 200 '{"data":{}}'; }
  }
}
)";

constexpr const char* locations = R"(
absolute_redirect off;
location /quick { return 200 quick; }
location /moved { return 302 /quick; }
location /slow { root FOLDER; limit_rate 15k; }
location /stalling { root FOLDER; limit_rate 1; }
location /files { root FOLDER; dav_methods PUT; }
location /upload {
  proxy_pass http://unix:FOLDER/behind.sock; proxy_pass_request_body off;
  proxy_set_header Content-Length ""; client_body_buffer_size 16m;
}
)";

std::string replaced(std::string text, std::string_view name, const std::string& value) {
    for (auto at = text.find(name); at != std::string::npos; at = text.find(name)) {
        text.replace(at, name.size(), value);
    }
    return text;
}

/// A listening socket that a child process inherits.
LoopbackListener inheritedListener() {
    const LoopbackListener listener;
    ::fcntl(listener.socket, F_SETFD, 0);
    return listener;
}

} // namespace

bool Nginx::isInstalled() {
    return ::access(program, X_OK) == 0;
}

Nginx::Nginx(const TestCertificate& certificate) {
    const LoopbackListener both = inheritedListener();
    const LoopbackListener serial = inheritedListener();
    _port = both.port;
    _serialPort = serial.port;
    _folder.write("certificate.pem", certificate.pem());
    _folder.write("key.pem", certificate.keyPem());
    std::filesystem::create_directory(files());
    _folder.write("slow", _slowBody);
    _folder.write("stalling", _slowBody);
    _folder.write("locations", replaced(locations, "FOLDER", _folder.path()));
    const std::string ported = replaced(replaced(configuration, "PORT", std::to_string(_port)),
                                        "SERIAL", std::to_string(_serialPort));
    _folder.write("nginx.conf", replaced(ported, "FOLDER", _folder.path()));

    // The sockets listen already, so that no port can be lost to another process, and who connects
    // before the server is ready waits.
    const std::string sockets =
        std::to_string(both.socket) + ";" + std::to_string(serial.socket) + ";";
    ::setenv("NGINX", sockets.c_str(), 1);
    _process = std::make_unique<Process>(std::vector<std::string>{
        program, "-p", _folder.path() + "/", "-c", "nginx.conf", "-e", _folder.path("error.log")});
    ::unsetenv("NGINX");
    ::close(both.socket);
    ::close(serial.socket);
}

std::string Nginx::url(const std::string& path) const {
    return "https://localhost:" + std::to_string(_port) + path;
}

std::string Nginx::serialUrl(const std::string& path) const {
    return "https://localhost:" + std::to_string(_serialPort) + path;
}

} // namespace KeloAPI::testing
