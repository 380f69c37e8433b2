// A feed as a list model: posts, and the cards between them. Pages are read as the view comes near
// their end or start, and videos as it comes to rest.
#pragma once

#include "Host.hpp"
#include "Rows.hpp"

#include <qqmlregistration.h>

#include <set>

class FeedModel : public RowModel {
    Q_OBJECT
    QML_ELEMENT
    /// Which feed: "popular", "timelines/tags/NAME" and so on. Set once.
    Q_PROPERTY(QString path MEMBER _path WRITE setPath NOTIFY changed)
    /// The channel of a channel's feed: name, details, icon and colours. Empty for others.
    Q_PROPERTY(QVariantMap channel MEMBER _channel NOTIFY changed)
    /// The row that the view shows, and the one at which it has come to rest.
    Q_PROPERTY(int shown MEMBER _shown NOTIFY changed)
    Q_PROPERTY(int atRest MEMBER _atRest NOTIFY changed)
    Q_PROPERTY(bool loading READ isLoading NOTIFY changed)
    Q_PROPERTY(bool failed MEMBER _hasFailed NOTIFY changed)

public:
    FeedModel();

    void setPath(const QString& path);
    bool isLoading() const { return _load->isReading[0] || _load->isReading[1]; }

    /// The view shows this row: reads the page before or behind it if that is near.
    Q_INVOKABLE void passed(int row);
    /// The view has come to rest at this row: fetches the next two videos.
    Q_INVOKABLE void settled(int row);
    /// Puts newer posts before the list.
    Q_INVOKABLE void refresh() { read(Before, {}); }
    Q_INVOKABLE void closeCard(int row);
    Q_INVOKABLE void looped(int row);

Q_SIGNALS:
    void changed();
    void prepended(); ///< Rows came before the first one.

private:
    enum Side { Before, Behind };
    using Rows = std::vector<std::shared_ptr<Row>>;

    /// What belongs to one reading of the feed. With it go the buttons, and who would hear of the
    /// calls that are under way.
    struct Load : QObject {
        std::optional<KeloAPI::Parameters> pages[2]; // before and behind, where there are any
        bool isReading[2] = {};
        std::set<std::string> known;     // posts
        QMultiMap<qlonglong, Row> cards; // not placed yet, by their positions
    };

    void restart(const KeloAPI::Parameters& start);
    void read(Side side, const KeloAPI::Parameters& page);
    void received(Side side, const KeloAPI::Parameters& page, const Rows& records,
                  const std::optional<KeloAPI::Metadata>& metadata);
    void failed(Side side, const KeloAPI::Parameters& page);
    void readChannel();
    void readCards();
    void placeCards();
    void insert(int at, const QList<Row>& rows);

    QString _path;
    QVariantMap _channel;
    std::unique_ptr<Load> _load = std::make_unique<Load>();
    bool _hasFailed = false;
    int _shown = 0;
    int _atRest = -1;
};
