#include "SoundModel.hpp"

#include <QPointer>

namespace KeloViewer {

using namespace KeloAPI;

SoundModel::SoundModel(QObject* parent)
    : QAbstractListModel(parent) {
    connect(&Host::shared(), &Host::retryWanted, this, &SoundModel::read);
    read();
}

void SoundModel::read() {
    SoundboardEndpoint::create(Api::session(SessionType::Authenticated))
        ->fetchSounds([model = QPointer(this)](const auto& sounds, const auto& error) {
            Host::shared().hear(error, [&] {
                if (model) {
                    model->beginResetModel();
                    model->_sounds = sounds;
                    model->endResetModel();
                }
            });
        });
}

QVariant SoundModel::data(const QModelIndex& index, int) const {
    const SoundboardSound& sound = *_sounds.at(static_cast<std::size_t>(index.row()));
    return QVariantMap{{"soundId", QString::fromStdString(sound.soundId)},
                       {"name", QString::fromStdString(sound.name)},
                       {"featured", sound.featured}};
}

} // namespace KeloViewer
