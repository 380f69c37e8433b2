#pragma once

#include "FaultServer.hpp"
#include "Matrix.hpp"

#include <chrono>
#include <memory>
#include <string>

namespace KeloAPI::testing {

/// One call under one fault, and what goes before and after it.
class Cell {
public:
    Cell(FaultMatrix& matrix, const Fault& fault, const Call& call);

    /// Takes the next step, if the one before has come to its end. False when none is left.
    bool goOn();
    /// How the call under the fault ended.
    const Outcome& outcome() const { return _outcome; }
    /// It is over, and nothing may be heard of it any more.
    void expectSilence() const;
    std::string name() const;

private:
    using Clock = std::chrono::steady_clock;
    enum class Step : std::uint8_t { Before, Under, After, Over };

    void send(bool underFault);
    void judge();
    void expectWell() const;

    FaultMatrix& _matrix;
    const Fault& _fault;
    const Call& _call;
    const Outcome _expected;
    std::unique_ptr<FaultServer> _server;
    Step _step;
    std::shared_ptr<Heard> _heard;
    std::shared_ptr<Heard> _underFault;
    Clock::time_point _sent;
    Outcome _outcome;
};

} // namespace KeloAPI::testing
