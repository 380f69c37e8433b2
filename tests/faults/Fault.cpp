#include "Fault.hpp"

#include <chrono>
#include <thread>

namespace KeloAPI::testing {

bool leave(const RawConnection& connection, Leave how) {
    switch (how) {
    case Leave::Stay:
        return true;
    case Leave::Farewell:
        SSL_shutdown(connection.session());
        return false;
    case Leave::Reset:
        connection.reset();
        return false;
    case Leave::Silence:
        // Its end is the client's, or the server's own.
        const_cast<RawConnection&>(connection).waitForClose();
        return false;
    case Leave::Close:
        break;
    }
    return false;
}

Strike saying(std::string bytes, Leave how) {
    return [bytes = std::move(bytes), how](const Encounter& encounter) {
        return encounter.connection.write(bytes) && leave(encounter.connection, how);
    };
}

Strike sayingOn(std::string begin, std::string piece, std::size_t most) {
    return [begin = std::move(begin), piece = std::move(piece), most](const Encounter& encounter) {
        bool goesOn = encounter.connection.write(begin);
        for (std::size_t said = 0; goesOn && said < most; said += piece.size()) {
            goesOn = encounter.connection.write(piece);
        }
        return goesOn && leave(encounter.connection, Leave::Silence);
    };
}

void drip(const RawConnection& connection, const std::string& bytes) {
    for (std::size_t i = 0; connection.write(bytes.substr(i % bytes.size(), 1)); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

Strike dripping(std::string bytes) {
    return [bytes = std::move(bytes)](const Encounter& encounter) {
        drip(encounter.connection, bytes);
        return false;
    };
}

Strike redirecting(const std::string& status,
                   std::function<std::string(const Encounter&)> location) {
    return [status, location = std::move(location)](const Encounter& encounter) {
        return encounter.connection.write(
            answerOf("over there", status, "Location: " + location(encounter) + "\r\n"));
    };
}

std::vector<Fault> cutting(const std::string& where, const std::string& bytes,
                           const std::vector<std::size_t>& places) {
    std::vector<Fault> faults;
    for (const BreakingOff& way : breakingOff) {
        for (const std::size_t place : places) {
            faults.push_back({.row = where + ": " + way.name,
                              .variant = "after " + std::to_string(place) + " bytes",
                              .rule = way.code,
                              .strike = saying(bytes.substr(0, place), way.how)});
        }
    }
    return faults;
}

} // namespace KeloAPI::testing
