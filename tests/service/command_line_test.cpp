#include "support/Process.hpp"
#include "support/RawClient.hpp"
#include "support/TestCertificate.hpp"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace KeloServiceTest {
namespace {

class CommandLineTest : public ::testing::Test {
protected:
    CommandLineTest() { writeCertificate(certificate, key); }

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

    TemporaryFolder folder;
    std::string certificate = folder.file("certificate.pem");
    std::string key = folder.file("certificate.key");
};

TEST_F(CommandLineTest, ServesUntilToldToStop) {
    for (const int signal : {SIGINT, SIGTERM}) {
        Process process(with({}));
        const int port = portOf(process.readLine());
        EXPECT_NE(ask(port, "/users/me", "kelo-development-session").find("\"mara\""),
                  std::string::npos);
        process.signal(signal);
        const Process::Outcome outcome = process.wait();
        EXPECT_EQ(outcome.code, 0);
        EXPECT_EQ(outcome.errors, "");
        EXPECT_NE(outcome.output.find("kelo-development-session"), std::string::npos);
    }
}

TEST_F(CommandLineTest, QuietPrintsTheAddressAlone) {
    Process process(with({"--quiet"}));
    EXPECT_GT(portOf(process.readLine()), 0);
    process.signal(SIGTERM);
    EXPECT_EQ(process.wait().output, "");
}

TEST_F(CommandLineTest, StopsAtOnceWhileAConnectionStalls) {
    const std::string faults =
        folder.write("faults.json", R"([{"action":{"type":"stall","afterBytes":3}}])");
    Process process(with({"--faults", faults}));
    RawClient client(portOf(process.readLine()));
    client.send("GET /users/me HTTP/1.1\r\n\r\n");
    EXPECT_EQ(client.readAll(200).bytes, "HTT");
    process.signal(SIGTERM);
    EXPECT_EQ(process.wait().code, 0);
}

TEST_F(CommandLineTest, AddsSessions) {
    Process process(with({"--session", "kofi=one", "--session", "theo.loops=two=three"}));
    const int port = portOf(process.readLine());
    EXPECT_NE(ask(port, "/users/me", "one").find("\"kofi\""), std::string::npos);
    EXPECT_NE(ask(port, "/users/me", "two=three").find("\"theo.loops\""), std::string::npos);
    process.signal(SIGTERM);
    EXPECT_EQ(process.wait().code, 0);
}

TEST_F(CommandLineTest, BeginsWithAMediaRate) {
    Process process(with({"--media-rate", "4321"}));
    const std::string answer = ask(portOf(process.readLine()), "/_service/media-rate", "");
    EXPECT_TRUE(answer.ends_with(R"({"bytesPerSecond":4321})")) << answer;
    process.signal(SIGTERM);
    EXPECT_EQ(process.wait().code, 0);
}

TEST_F(CommandLineTest, BeginsWithTimesAndARateForUploads) {
    Process process(
        with({"--upload-rate", "4321", "--upload-expiry", "77", "--processing-time", "0.5"}));
    const int port = portOf(process.readLine());
    const std::string rate = ask(port, "/_service/upload-rate", "");
    EXPECT_TRUE(rate.ends_with(R"({"bytesPerSecond":4321})")) << rate;
    const std::string time = ask(port, "/_service/processing-time", "");
    EXPECT_TRUE(time.ends_with(R"({"seconds":0.5})")) << time;
    process.signal(SIGTERM);
    EXPECT_EQ(process.wait().code, 0);
}

TEST_F(CommandLineTest, KeepsItsStateInAFile) {
    const std::string database = folder.file("service.db");
    for (const char* more : {"--session=kofi=kept", "--quiet"}) {
        Process process(with({"--database", database, more}));
        const int port = portOf(process.readLine());
        EXPECT_NE(ask(port, "/users/me", "kept").find("\"kofi\""), std::string::npos);
        process.signal(SIGTERM);
        EXPECT_EQ(process.wait().code, 0);
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
    Process process(with({"--listen", "::1"}));
    EXPECT_GT(portOf(process.readLine()), 0);
    process.signal(SIGTERM);
    EXPECT_EQ(process.wait().code, 0);
}

TEST_F(CommandLineTest, FindsTheDevelopmentCertificateBesideItsFolder) {
    const std::string binaries = folder.file("bin");
    const std::string certificates = folder.file("certificates");
    mkdir(binaries.c_str(), 0700);
    mkdir(certificates.c_str(), 0700);
    std::filesystem::copy_file(KELO_SERVICE_BINARY, binaries + "/kelo-service");
    {
        Process process({"--port", "0"}, binaries + "/kelo-service");
        const Process::Outcome outcome = process.wait();
        EXPECT_EQ(outcome.code, 2);
        EXPECT_NE(outcome.errors.find("development-1.pem"), std::string::npos) << outcome.errors;
    }
    writeCertificate(certificates + "/development-1.pem", certificates + "/development-1.key");
    Process process({"--port", "0", "--exit-with-parent"}, binaries + "/kelo-service");
    EXPECT_GT(portOf(process.readLine()), 0);
    process.signal(SIGTERM);
    EXPECT_EQ(process.wait().code, 0);
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
    expectRefusal({"--no-such-option"}, "--no-such-option");
    expectRefusal({"stray"}, "stray");
    expectRefusal({"--port"}, "--port");
    expectRefusal({"--port", "eighty"}, "--port");
    expectRefusal({"--port", "65536"}, "--port");
    expectRefusal({"--port", "-1"}, "--port");
    expectRefusal({"--media-rate", "-1"}, "--media-rate");
    expectRefusal({"--media-rate", "fast"}, "--media-rate");
    expectRefusal({"--upload-rate", "-1"}, "--upload-rate");
    expectRefusal({"--upload-expiry", "-1"}, "--upload-expiry");
    expectRefusal({"--processing-time", "-1"}, "--processing-time");
    expectRefusal({"--certificate", certificate}, "--key");
    expectRefusal({"--key", key}, "--certificate");
    expectRefusal(with({"--session", "mara"}), "USERNAME=KEY");
    expectRefusal(with({"--session", "=key"}), "USERNAME=KEY");
    expectRefusal(with({"--session", "mara="}), "USERNAME=KEY");
    expectRefusal(with({"--session", "nobody=key"}), "nobody");
    expectRefusal(with({"--listen", "0.0.0.0"}), "0.0.0.0");
}

TEST_F(CommandLineTest, RefusesAPortInUse) {
    Process first(with({}));
    const std::string port = std::to_string(portOf(first.readLine()));
    expectRefusal({"--port", port, "--certificate", certificate, "--key", key}, "in use");
    first.signal(SIGTERM);
    EXPECT_EQ(first.wait().code, 0);
}

TEST_F(CommandLineTest, RefusesBadDatabases) {
    expectRefusal(with({"--database", folder.write("text.db", std::string(4096, 'x'))}),
                  "not a database");
    expectRefusal(with({"--database", folder.file("no/such/folder.db")}), "folder.db");
    expectRefusal(with({"--database", folder.file("")}), "cannot use the database");
}

TEST_F(CommandLineTest, RefusesBadCertificatesAndKeys) {
    const auto serve = [](const std::string& pem, const std::string& keyFile) {
        return std::vector<std::string>{"--port", "0", "--certificate", pem, "--key", keyFile};
    };
    const std::string text = folder.write("text.pem", "no certificate\n");
    const std::string absent = folder.file("absent.pem");
    const std::string other = folder.file("other.key");
    writeCertificate(folder.file("other.pem"), other);
    expectRefusal(serve(absent, key), "cannot read the certificate " + absent);
    expectRefusal(serve(certificate, absent), "cannot read the key " + absent);
    expectRefusal(serve(text, key), "the certificate " + text + " is not usable");
    expectRefusal(serve(key, key), "the certificate " + key + " is not usable");
    expectRefusal(serve(certificate, text), "the key " + text);
    expectRefusal(serve(certificate, certificate), "the key " + certificate);
    expectRefusal(serve(certificate, other), "mismatch");
    expectRefusal(serve(folder.file(""), key), "certificate");
}

TEST_F(CommandLineTest, RefusesBadFaultsFiles) {
    expectRefusal(with({"--faults", folder.file("absent.json")}), "absent.json");
    expectRefusal(with({"--faults", folder.write("bad.json", "[{]")}), "bad.json is no JSON");
    expectRefusal(with({"--faults", folder.write("wrong.json", R"([{"action":{"type":"x"}}])")}),
                  "fault 1: action.type x is not known");
    expectRefusal(with({"--faults", folder.file("")}), "cannot read the faults file");
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
