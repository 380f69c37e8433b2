#include "Cell.hpp"

#include "support/TimeLimit.hpp"

namespace KeloAPI::testing {

namespace {

const Outcome timedOut = outcomeOf(HTTPErrorCode::TimedOut);
constexpr std::chrono::milliseconds patience = 3 * timeLimit;

} // namespace

Cell::Cell(FaultMatrix& matrix, const Fault& fault, const Call& call)
    : _matrix(matrix)
    , _fault(fault)
    , _call(call)
    , _expected(fault.rule.of(call.name, call.kind))
    , _server(std::make_unique<FaultServer>(fault, matrix.around))
    , _step(fault.isLate ? Step::Before : Step::Under) {
    send(_step == Step::Under);
}

std::string Cell::name() const {
    return _call.name + " under \"" + _fault.row + (_fault.variant.empty() ? "" : ", ") +
           _fault.variant + '"';
}

void Cell::send(bool underFault) {
    const bool isElsewhere = underFault && _fault.host;
    const bool isHasty = underFault && _expected == timedOut && !_fault.isSlow;
    _matrix.aim(_fault, isElsewhere ? _fault.host(_matrix.around) : _server->host(),
                isHasty ? FaultMatrix::limit : patience);
    _heard = std::make_shared<Heard>();
    _sent = Clock::now();
    _call.send(_heard);
    _heard->isSending = false;
    if (underFault) {
        _underFault = _heard;
    }
}

bool Cell::goOn() {
    if (_step != Step::Over && _heard->times == 0) {
        if (Clock::now() - _sent < patience + timeLimit) {
            return true;
        }
        ADD_FAILURE() << name() << " did not complete";
        _step = Step::Over;
    }
    switch (_step) {
    case Step::Before:
        expectWell();
        _server->setAtFault();
        _step = Step::Under;
        send(true);
        return true;
    case Step::Under:
        judge();
        _server->recover();
        _step = Step::After;
        send(false);
        return true;
    case Step::After:
        // The limit of the whole answer is the manager's: a busy machine may exceed it.
        if (_fault.isSlow && outcomeOf(_heard->error) == timedOut) {
            send(false);
            return true;
        }
        expectWell();
        _step = Step::Over;
        break;
    case Step::Over:
        break;
    }
    _server.reset();
    return false;
}

void Cell::judge() {
    _outcome = outcomeOf(_heard->error);
    EXPECT_EQ(_outcome, _expected) << name() << '\n'
                                   << (_heard->error ? _heard->error->description() : "");
    if (_outcome == timedOut) {
        EXPECT_GE(Clock::now() - _sent, FaultMatrix::limit) << name();
    }
}

void Cell::expectWell() const {
    EXPECT_EQ(outcomeOf(_heard->error), ok) << name() << ", the call beside it\n"
                                            << (_heard->error ? _heard->error->description() : "");
    EXPECT_TRUE(_heard->content.empty() || _heard->content == wellBody)
        << name() << ", the call beside it: " << _heard->content;
}

void Cell::expectSilence() const {
    EXPECT_EQ(_heard->times, 1) << name();
    if (_underFault) {
        EXPECT_EQ(_underFault->times, 1) << name();
        EXPECT_TRUE(_underFault->isInItsPlace) << name();
    }
}

} // namespace KeloAPI::testing
