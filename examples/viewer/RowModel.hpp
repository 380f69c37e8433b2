// Rows of what is shown, as a list model.
#pragma once

#include <KeloAPI/KeloAPI.hpp>

#include <QAbstractListModel>

struct Row {
    std::shared_ptr<KeloAPI::KLWatchPost> post; ///< Null where the row is not a post.
    QVariantMap shown;                          ///< What is missing is an empty text.
    QString page;                               ///< The query of the page that brought the post.
};

/// The roles are "record", which is what is shown, and "isCard".
class RowModel : public QAbstractListModel {
    Q_OBJECT

public:
    int rowCount(const QModelIndex& = {}) const override { return static_cast<int>(_rows.size()); }
    QHash<int, QByteArray> roleNames() const override {
        return {{Record, "record"}, {IsCard, "isCard"}};
    }
    QVariant data(const QModelIndex& index, int role) const override {
        const Row& row = _rows.at(index.row());
        return role == IsCard ? QVariant(row.post == nullptr) : row.shown;
    }

protected:
    enum Role { Record, IsCard };

    void setRows(QList<Row> rows) {
        beginResetModel();
        _rows = std::move(rows);
        endResetModel();
    }

    QList<Row> _rows;
};
