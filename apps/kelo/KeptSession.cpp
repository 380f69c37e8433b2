#include "KeptSession.hpp"

#include "Failure.hpp"
#include "FileReplacement.hpp"
#include "Text.hpp"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace KeloHost {

using namespace KeloAPI;

namespace {

namespace fs = std::filesystem;

/// Absent where the environment names no directory for it.
std::optional<fs::path> directory() {
    const auto container = Application::groupContainer("kelo");
    const auto path = container ? container->filePath() : std::nullopt;
    return path ? std::optional(fs::path(*path) / "sessions") : std::nullopt;
}

std::string fileName(const URL& service) {
    return service.scheme() + "_" + service.host() + "_" + std::to_string(*service.port());
}

Failure failure(const std::string& what, const fs::path& path, const std::string& why) {
    return {ExitCode::Failed, "cannot " + what + " the session in " + path.string() + ": " + why};
}

} // namespace

URL serviceAt(const std::string& host) {
    return URL::parse("https://" + host).value();
}

std::optional<KeptSession> keptSession(const URL& service) {
    const auto folder = directory();
    if (!folder) {
        return std::nullopt;
    }
    const fs::path path = *folder / fileName(service);
    std::error_code error;
    if (!fs::exists(path, error)) {
        if (error) {
            throw failure("read", path, error.message());
        }
        return std::nullopt;
    }
    std::ifstream file(path);
    KeptSession session;
    if (!std::getline(file, session.key) || !std::getline(file, session.user) ||
        !fitsHeader(session.key)) {
        throw failure("read", path,
                      file.is_open() ? "it is damaged and has to be removed"
                                     : std::strerror(errno));
    }
    return session;
}

void keepSession(const URL& service, const KeptSession& session) {
    const auto folder = directory();
    if (!folder) {
        throw Failure(ExitCode::Failed, "there is no directory for the session: neither "
                                        "XDG_DATA_HOME nor HOME is set");
    }
    const fs::path path = *folder / fileName(service);
    std::error_code error;
    fs::create_directories(*folder, error);
    fs::permissions(*folder, fs::perms::owner_all, error);
    if (error) {
        throw failure("keep", path, error.message());
    }
    const int problem = replaceFile(path, session.key + "\n" + session.user + "\n", 0600);
    if (problem != 0) {
        throw failure("keep", path, std::strerror(problem));
    }
}

bool forgetSession(const URL& service) {
    const auto folder = directory();
    if (!folder) {
        return false;
    }
    std::error_code error;
    const bool removed = fs::remove(*folder / fileName(service), error);
    if (error) {
        throw failure("remove", *folder / fileName(service), error.message());
    }
    return removed;
}

} // namespace KeloHost
