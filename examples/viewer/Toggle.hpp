// A button that answers at once, and goes back if the service refuses what it asks for.
#pragma once

#include "Host.hpp"

class Toggle : public QObject {
    Q_OBJECT
    /// What is shown.
    Q_PROPERTY(bool on MEMBER _isOn NOTIFY changed)

public:
    /// `on` is what the service knows; `call(on, completion)` tells it of a change.
    template <class Call>
    Toggle(QObject* parent, bool on, Call call)
        : QObject(parent)
        , _isOn(on)
        , _isConfirmedOn(on)
        , _send([this, call] {
            const auto taken = [this, sent = _isOn](const auto&) {
                _isConfirmedOn = sent;
                end();
            };
            const auto refused = [this] {
                _isOn = _isConfirmedOn;
                end();
            };
            call(_isOn, Host::completion(this, taken, refused));
        }) {}

    Q_INVOKABLE void press() {
        _isOn = !_isOn;
        Q_EMIT changed();
        settle();
    }

Q_SIGNALS:
    void changed();

private:
    /// Sends what is shown until the service has it; one call at a time.
    void settle() {
        if (_isOn != _isConfirmedOn && !std::exchange(_isBusy, true)) {
            _send();
        }
    }
    void end() {
        _isBusy = false;
        Q_EMIT changed();
        settle();
    }

    bool _isOn;
    bool _isConfirmedOn;
    bool _isBusy = false;
    const Host::Work _send;
};
