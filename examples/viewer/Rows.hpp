// Rows of what is shown, made of records, and a list model of them.
#pragma once

#include <KeloAPI/KeloAPI.hpp>

#include <QAbstractListModel>

struct Row {
    std::shared_ptr<KeloAPI::KLWatchPost> post; ///< Null where the row is not a post.
    QVariantMap shown;                          ///< What is missing is an empty text.
    QString page;                               ///< The query of the page that brought the post.

    /// A post: its texts, with their links set off, the URLs of its pictures, and how many others
    /// like and have reposted it. Read off the main thread, with the library's parser of each
    /// field.
    static std::shared_ptr<Row> ofPost(const KeloAPI::JsonObject& json);

    /// A card between the posts of a feed. Its "position" says how many posts stand before it, and
    /// its "closePath" where its closing is told; that is empty where it stays. Throws where it is
    /// of a kind that is not known.
    static std::shared_ptr<Row> ofCard(const KeloAPI::JsonObject& json);
};
using RowParser = KeloAPI::KLClosureParser<Row>;

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
