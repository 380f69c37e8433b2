// The soundboard as a list model, whose one role is the whole sound.
#pragma once

#include "Host.hpp"

#include <QAbstractListModel>

namespace KeloViewer {

class SoundModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT

public:
    explicit SoundModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& = {}) const override {
        return static_cast<int>(_sounds.size());
    }
    QHash<int, QByteArray> roleNames() const override { return {{0, "sound"}}; }
    QVariant data(const QModelIndex& index, int role) const override;

private:
    void read();

    std::vector<std::shared_ptr<KeloAPI::SoundboardSound>> _sounds;
};

} // namespace KeloViewer
