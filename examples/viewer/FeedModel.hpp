// A feed as a list model: posts, and the cards between them. Pages are read as the view comes near
// their end or start, and videos as it comes to rest.
#pragma once

#include "Host.hpp"
#include "Records.hpp"

#include <qqmlregistration.h>

#include <QAbstractListModel>
#include <set>

namespace KeloViewer {

/// Something the user switches. It shows the new state at once, and goes back if the service
/// refuses it.
struct Toggle {
    Toggle() = default;
    /// As the record says.
    explicit Toggle(bool on)
        : first(on)
        , shown(on)
        , confirmed(on) {}

    bool first = false;
    bool shown = false;
    bool confirmed = false;
    bool isBusy = false;
    /// What it adds to the counter of the record.
    int added() const { return static_cast<int>(shown) - static_cast<int>(first); }
};

class FeedModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    /// Which feed: "popular", "timelines/tags/NAME" and so on. Set once.
    Q_PROPERTY(QString path MEMBER _path WRITE setPath NOTIFY changed)
    /// The channel of a channel's feed: name, description, icon and colours. Empty for others.
    Q_PROPERTY(QVariantMap channel MEMBER _channel NOTIFY changed)
    Q_PROPERTY(bool loading READ isLoading NOTIFY changed)
    Q_PROPERTY(bool failed MEMBER _hasFailed NOTIFY changed)

public:
    enum Action { Like, Rekelo, Follow, Less };
    Q_ENUM(Action)

    explicit FeedModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& = {}) const override { return static_cast<int>(_rows.size()); }
    QHash<int, QByteArray> roleNames() const override;
    QVariant data(const QModelIndex& index, int role) const override;

    void setPath(const QString& path);
    bool isLoading() const { return _isReading[0] || _isReading[1]; }

    /// The view shows this row: reads the page before or behind it if that is near.
    Q_INVOKABLE void passed(int row);
    /// The view has come to rest at this row: fetches its video and the next two.
    Q_INVOKABLE void settled(int row);
    /// Puts newer posts before the list.
    Q_INVOKABLE void refresh();
    Q_INVOKABLE void act(int row, Action action);
    Q_INVOKABLE void closeCard(int row);
    Q_INVOKABLE void looped(int row);

Q_SIGNALS:
    void changed();
    void aboutToPrepend();
    void prepended(int count); ///< Rows came before the first one.

private:
    struct Row {
        std::shared_ptr<FeedPost> post; // null for a card
        std::shared_ptr<FeedCard> card;
        KeloAPI::Parameters page; // which brought the post
        QString video;            // its file, once that is there
        Toggle like, rekelo, less;
        std::shared_ptr<Toggle> follow; // all posts of one author share it
    };
    using RowPointer = std::shared_ptr<Row>;
    using Posts = std::vector<std::shared_ptr<FeedPost>>;
    using Done = std::function<void(const KeloAPI::Error* error)>;
    using Send = std::function<void(bool on, Done done)>;
    enum Side { Before, Behind };

    enum Role {
        IsCard,
        Record,
        Video,
        Loops,
        Likes,
        Liked,
        Rekelos,
        Rekeloed,
        Following,
        LessOfIt
    };

    void restart(const KeloAPI::Parameters& start);
    void failed(Side side, const KeloAPI::Parameters& paging);
    void read(Side side, const KeloAPI::Parameters& paging);
    void received(Side side, const KeloAPI::Parameters& paging, const Posts& posts,
                  const std::optional<KeloAPI::Metadata>& metadata);
    template <class P, class Use>
    void readRecords(const std::string& path, Use use);
    void readChannel(const std::string& id);
    void readCards();
    void placeCards();
    void insert(int at, std::vector<RowPointer> rows);
    std::vector<RowPointer> rowsOf(const Posts& posts, const KeloAPI::Parameters& page);
    void fetchVideo(const RowPointer& row, KeloAPI::QueuePriority priority);
    void settle(const std::shared_ptr<Toggle>& toggle, const Send& send);
    void rowsChanged();

    QString _path;
    QVariantMap _channel;
    std::vector<RowPointer> _rows;
    std::set<std::string> _known;
    std::vector<std::shared_ptr<FeedCard>> _cards; // not placed yet
    std::optional<KeloAPI::Parameters> _pages[2];  // before and behind, where there are any
    bool _isReading[2] = {};
    bool _hasFailed = false;
    KeloAPI::Parameters _start; // the page to begin with; empty for the first
    int _shown = 0;
    int _generation = 0; // pages that were asked for before a restart are dropped
};

} // namespace KeloViewer
