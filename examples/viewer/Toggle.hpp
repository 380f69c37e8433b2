// A button that answers at once, and goes back if the service refuses what it asks for.
#pragma once

#include "Host.hpp"
#include "RowModel.hpp"

class Toggle : public QObject {
    Q_OBJECT
    /// What is shown.
    Q_PROPERTY(bool on READ isOn NOTIFY changed)
    /// What it adds to the counter of the post's record.
    Q_PROPERTY(int added READ added NOTIFY changed)

public:
    /// `on` is what the service knows; `call(on, completion)` tells it of a change.
    template <class Call>
    Toggle(QObject* parent, bool on, Call call)
        : QObject(parent)
        , _wasOn(on)
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

    bool isOn() const { return _isOn; }
    int added() const { return static_cast<int>(_isOn) - static_cast<int>(_wasOn); }

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

    const bool _wasOn;
    bool _isOn;
    bool _isConfirmedOn;
    bool _isBusy = false;
    const Host::Work _send;
};

/// Gives a post its buttons "like", "rekelo", "less" and "follow". They go with `owner`, but for
/// the last, which all posts of an author share.
void addToggles(Row& row, QObject* owner);
