// The soundboard as a list model.
#pragma once

#include "Host.hpp"
#include "Rows.hpp"

#include <qqmlregistration.h>

class SoundModel : public RowModel {
    Q_OBJECT
    QML_ELEMENT

public:
    SoundModel() {
        connect(&Host::shared(), &Host::retryWanted, this, &SoundModel::read);
        read();
    }

private:
    void read() {
        using namespace KeloAPI;
        SoundboardEndpoint::create(Api::session(SessionType::Authenticated))
            ->fetchSounds(Host::completion(this, [this](const auto& sounds, const auto&) {
                QList<Row> rows;
                for (const auto& sound : sounds) {
                    rows.append({nullptr,
                                 {{"soundId", QString::fromStdString(sound->soundId)},
                                  {"name", QString::fromStdString(sound->name)},
                                  {"featured", sound->featured}},
                                 {}});
                }
                setRows(rows);
            }));
    }
};
