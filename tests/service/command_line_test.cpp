#include "support/Process.hpp"
#include "support/RawClient.hpp"
#include "support/TestCertificate.hpp"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

namespace KeloServiceTest {
namespace {

class CommandLineTest : public ::testing::Test {
protected:
    /// The arguments of a service that would run, with others appended.
    std::vector<std::string> with(const std::vector<std::string>& more) const {
        std::vector<std::string> arguments{"--port", "0", "--certificate",     certificate,
                                           "--key",  key, "--exit-with-parent"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
    /// Expects one line on standard error, nothing on standard output and exit code 2.
    static void expectRefusal(const std::vector<std::string>& arguments, const std::string& says) {
        Process process(arguments);
        const Process::Outcome outcome = process.wait();
        EXPECT_EQ(outcome.code, 2) << says;
        EXPECT_EQ(outcome.output, "") << says;
        EXPECT_TRUE(outcome.errors.starts_with("kelo-service: ")) << outcome.errors;
        EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1)
            << outcome.errors;
        EXPECT_TRUE(outcome.errors.ends_with("\n")) << outcome.errors;
        EXPECT_NE(outcome.errors.find(says), std::string::npos) << outcome.errors;
    }
    static int portOf(const std::string& line) {
        const std::string start = "kelo-service: listening on https://localhost:";
        EXPECT_TRUE(line.starts_with(start)) << line;
        return line.starts_with(start) ? std::stoi(line.substr(start.size())) : 0;
    }
    static std::string ask(int port, const std::string& target, const std::string& sessionKey) {
        RawClient client(port);
        client.send("GET " + target + " HTTP/1.1\r\nkelo-session-id: " + sessionKey + "\r\n\r\n");
        return client.readAnswer();
    }

    /// A service that stops in peace at the end, with these arguments more.
    struct Running {
        explicit Running(const std::vector<std::string>& arguments, const std::string& program = "")
            : process(arguments, program)
            , port(portOf(process.readLine())) {}
        Process::Outcome stop(int signal = SIGTERM) {
            process.signal(signal);
            Process::Outcome outcome = process.wait();
            EXPECT_EQ(outcome.code, 0);
            EXPECT_EQ(outcome.errors, "");
            return outcome;
        }

        Process process;
        int port;
    };

    TemporaryFolder folder;
    CertificateFiles files{folder};
    std::string certificate = files.certificate;
    std::string key = files.key;
};

TEST_F(CommandLineTest, ServesUntilToldToStop) {
    for (const int signal : {SIGINT, SIGTERM}) {
        Running service(with({}));
        EXPECT_NE(ask(service.port, "/users/me", "kelo-development-session").find("\"mara\""),
                  std::string::npos);
        EXPECT_NE(service.stop(signal).output.find("kelo-development-session"), std::string::npos);
    }
}

TEST_F(CommandLineTest, QuietPrintsTheAddressAlone) {
    Running service(with({"--quiet"}));
    EXPECT_GT(service.port, 0);
    EXPECT_EQ(service.stop().output, "");
}

TEST_F(CommandLineTest, StopsAtOnceWhileAConnectionStalls) {
    const std::string faults =
        folder.write("faults.json", R"([{"action":{"type":"stall","afterBytes":3}}])");
    Running service(with({"--faults", faults}));
    RawClient client(service.port);
    client.send("GET /users/me HTTP/1.1\r\n\r\n");
    EXPECT_EQ(client.readAll(200).bytes, "HTT");
    service.stop();
}

TEST_F(CommandLineTest, AddsSessions) {
    Running service(with({"--session", "kofi=one", "--session", "theo.loops=two=three"}));
    EXPECT_NE(ask(service.port, "/users/me", "one").find("\"kofi\""), std::string::npos);
    EXPECT_NE(ask(service.port, "/users/me", "two=three").find("\"theo.loops\""),
              std::string::npos);
    service.stop();
}

TEST_F(CommandLineTest, BeginsWithTimesAndRates) {
    Running service(with({"--media-rate", "4321", "--upload-rate", "1234", "--upload-expiry", "77",
                          "--processing-time", "0.5"}));
    const std::pair<const char*, const char*> settings[] = {
        {"/_service/media-rate", R"({"bytesPerSecond":4321})"},
        {"/_service/upload-rate", R"({"bytesPerSecond":1234})"},
        {"/_service/processing-time", R"({"seconds":0.5})"},
    };
    for (const auto& [path, value] : settings) {
        const std::string answer = ask(service.port, path, "");
        EXPECT_TRUE(answer.ends_with(value)) << answer;
    }
    service.stop();
}

TEST_F(CommandLineTest, KeepsItsStateInAFile) {
    const std::string database = folder.path("service.db");
    for (const char* more : {"--session=kofi=kept", "--quiet"}) {
        Running service(with({"--database", database, more}));
        EXPECT_NE(ask(service.port, "/users/me", "kept").find("\"kofi\""), std::string::npos);
        service.stop();
    }
}

TEST_F(CommandLineTest, ListensOnIPv6) {
    const int probe = ::socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    address.sin6_addr = in6addr_loopback;
    const bool available =
        ::bind(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::close(probe);
    if (!available) {
        GTEST_SKIP() << "this machine has no IPv6";
    }
    Running service(with({"--listen", "::1"}));
    EXPECT_GT(service.port, 0);
    service.stop();
}

TEST_F(CommandLineTest, FindsTheDevelopmentCertificateBesideItsFolder) {
    const std::string binary = folder.path("bin") + "/kelo-service";
    std::filesystem::create_directory(folder.path("bin"));
    std::filesystem::create_directory(folder.path("certificates"));
    std::filesystem::copy_file(KELO_SERVICE_BINARY, binary);
    const Process::Outcome outcome = Process({"--port", "0"}, binary).wait();
    EXPECT_EQ(outcome.code, 2);
    EXPECT_NE(outcome.errors.find("development-1.pem"), std::string::npos) << outcome.errors;
    const CertificateFiles development(folder, "certificates/development-1");
    Running service({"--port", "0", "--exit-with-parent"}, binary);
    EXPECT_GT(service.port, 0);
    service.stop();
}

TEST_F(CommandLineTest, ExplainsItself) {
    const Process::Outcome help = Process({"--help"}).wait();
    EXPECT_EQ(help.code, 0);
    EXPECT_EQ(help.errors, "");
    for (const char* part :
         {"--port", "--database", "--certificate", "--key", "--session", "--faults", "--media-rate",
          "--upload-rate", "--upload-expiry", "--processing-time", "--quiet", "--version",
          "kelo-development-session", "loop-the-loop"}) {
        EXPECT_NE(help.output.find(part), std::string::npos) << part;
    }
    const Process::Outcome version = Process({"--version"}).wait();
    EXPECT_EQ(version.code, 0);
    EXPECT_TRUE(version.output.starts_with("kelo-service ")) << version.output;
}

TEST_F(CommandLineTest, RefusesBadArguments) {
    const std::vector<std::string> unusable[] = {
        {"--no-such-option"},      {"--port"},
        {"--port", "eighty"},      {"--port", "65536"},
        {"--port", "-1"},          {"--media-rate", "-1"},
        {"--media-rate", "fast"},  {"--upload-rate", "-1"},
        {"--upload-expiry", "-1"}, {"--processing-time", "-1"},
    };
    for (const auto& arguments : unusable) {
        expectRefusal(arguments, arguments.front());
    }
    expectRefusal({"stray"}, "stray");
    expectRefusal({"--certificate", certificate}, "--key");
    expectRefusal({"--key", key}, "--certificate");
    for (const char* session : {"mara", "=key", "mara="}) {
        expectRefusal(with({"--session", session}), "USERNAME=KEY");
    }
    expectRefusal(with({"--session", "nobody=key"}), "nobody");
    expectRefusal(with({"--listen", "0.0.0.0"}), "0.0.0.0");
    Running first(with({}));
    expectRefusal(
        {"--port", std::to_string(first.port), "--certificate", certificate, "--key", key},
        "in use");
    first.stop();
}

TEST_F(CommandLineTest, RefusesBadDatabases) {
    expectRefusal(with({"--database", folder.write("text.db", std::string(4096, 'x'))}),
                  "not a database");
    expectRefusal(with({"--database", folder.path("no/such/folder.db")}), "folder.db");
    expectRefusal(with({"--database", folder.path("")}), "cannot use the database");
}

TEST_F(CommandLineTest, RefusesBadCertificatesAndKeys) {
    const auto serve = [](const std::string& pem, const std::string& keyFile) {
        return std::vector<std::string>{"--port", "0", "--certificate", pem, "--key", keyFile};
    };
    const std::string text = folder.write("text.pem", "no certificate\n");
    const std::string absent = folder.path("absent.pem");
    const std::string other = CertificateFiles(folder, "other").key;
    expectRefusal(serve(absent, key), "cannot read the certificate " + absent);
    expectRefusal(serve(certificate, absent), "cannot read the key " + absent);
    expectRefusal(serve(text, key), "the certificate " + text + " is not usable");
    expectRefusal(serve(key, key), "the certificate " + key + " is not usable");
    expectRefusal(serve(certificate, text), "the key " + text);
    expectRefusal(serve(certificate, certificate), "the key " + certificate);
    expectRefusal(serve(certificate, other), "mismatch");
    expectRefusal(serve(folder.path(""), key), "certificate");
}

TEST_F(CommandLineTest, RefusesBadFaultsFiles) {
    expectRefusal(with({"--faults", folder.path("absent.json")}), "absent.json");
    expectRefusal(with({"--faults", folder.write("bad.json", "[{]")}), "bad.json is no JSON");
    expectRefusal(with({"--faults", folder.write("wrong.json", R"([{"action":{"type":"x"}}])")}),
                  "fault 1: action.type x is not known");
    expectRefusal(with({"--faults", folder.path("")}), "cannot read the faults file");
}

TEST_F(CommandLineTest, EndsWithItsParent) {
    // A shell in between starts the service and dies; the service must not stay.
    std::string command = "'" KELO_SERVICE_BINARY "'";
    for (const std::string& argument : with({"--quiet"})) {
        command += " '" + argument + "'";
    }
    Process shell({"-c", command + " & echo $!; exec sleep 60"}, "/bin/sh");
    const std::string one = shell.readLine();
    const std::string other = shell.readLine();
    const bool idFirst = other.starts_with("kelo-service");
    EXPECT_GT(portOf(idFirst ? other : one), 0);
    const pid_t service = std::stoi(idFirst ? one : other);
    // Its standard output is the service's too, and ends with the last of them.
    shell.signal(SIGKILL);
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(shell.readLine(), "");
    if (std::chrono::steady_clock::now() - before > std::chrono::seconds(8)) {
        ADD_FAILURE() << "the service outlived its parent";
        ::kill(service, SIGKILL);
    }
}

} // namespace
} // namespace KeloServiceTest
