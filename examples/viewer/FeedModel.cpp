#include "FeedModel.hpp"

#include "Loops.hpp"
#include "RemoteFile.hpp"
#include "Toggle.hpp"

#include <algorithm>
#include <QSettings>
#include <QUrlQuery>

using namespace KeloAPI;

namespace {

constexpr std::int64_t pageSize = 10;
/// How many rows before the end the next page is read.
constexpr int rowsAhead = 6;

/// The parameters of a query, all of them as texts.
Parameters parametersOf(const QString& query) {
    Parameters parameters;
    for (const auto& [name, value] : QUrlQuery(query).queryItems(QUrl::FullyDecoded)) {
        parameters.emplace(name.toStdString(), value.toStdString());
    }
    return parameters;
}

/// All posts of an author share it. Records do not tell, so that nobody is followed at the start.
Toggle* followOf(const std::string& authorId) {
    static std::map<std::string, Toggle*> known;
    Toggle*& follow = known[authorId];
    if (follow == nullptr) {
        follow = new Toggle(&Host::shared(), false, [authorId](bool on, const auto& completion) {
            UserEndpoint::create(authorId)->setFollowingOnTwitter(on, completion);
        });
    }
    return follow;
}

/// Gives a post its buttons, which go with `owner`, but for the author's.
void addToggles(Row& row, QObject* owner) {
    const auto add = [&](const char* name, bool on, auto call) {
        row.shown[name] = QVariant::fromValue(new Toggle(owner, on, call));
    };
    const auto post = row.post;
    add("like", post->liked.value_or(false), [post](bool on, const auto& completion) {
        LikeActionEndpoint::create(post)->toggle(on, completion);
    });
    add("rekelo", post->rekeloed(), [post](bool on, const auto& completion) {
        RekeloActionEndpoint::create(post)->toggle(on, [=](const auto& result) {
            if (const auto* success = result.success()) {
                post->currentUserRekelo = on ? success->item : nullptr;
            }
            completion(result);
        });
    });
    add("less", false, [post](bool on, const auto& completion) {
        RecommendationsEndpoint::create()->addPostFeedback(
            *post->postId, on ? RecommendationBoost::Negative : RecommendationBoost::Neutral,
            completion);
    });
    row.shown["follow"] =
        QVariant::fromValue(followOf(row.shown["authorId"].toString().toStdString()));
}

} // namespace

FeedModel::FeedModel() {
    connect(&Host::shared(), &Host::retryWanted, this, [this] {
        if (_rows.isEmpty()) {
            setPath(_path);
        } else {
            passed(_shown);
            settled(_atRest);
        }
    });
}

void FeedModel::setPath(const QString& path) {
    _path = path;
    restart(parametersOf(QSettings().value("place/" + _path).toString()));
    if (path.startsWith("timelines/channels/")) {
        readChannel();
    }
}

void FeedModel::restart(const Parameters& start) {
    setRows({});
    _load = std::make_unique<Load>();
    read(Behind, start);
    if (start.empty() && !_path.contains('/')) {
        readCards();
    }
}

void FeedModel::read(Side side, const Parameters& page) {
    if (std::exchange(_load->isReading[side], true)) {
        return;
    }
    _hasFailed = false;
    Q_EMIT changed();
    // The endpoint's own `fetch` reads the library's posts alone: here it gives the path and the
    // usual parameters, and the parser is the viewer's own.
    const auto endpoint = TimelineEndpoint::create(_path.toStdString());
    Parameters parameters = page;
    parameters.emplace("size", pageSize);
    parameters.insert(endpoint->parameters().begin(), endpoint->parameters().end());
    endpoint->setParameters(std::move(parameters));
    const auto heard = [=, this](const Rows& records, const auto& metadata, const auto&...) {
        received(side, page, records, metadata);
    };
    endpoint->request(std::make_shared<RowParser>(Row::ofPost),
                      Host::completion(_load.get(), heard, [=, this] { failed(side, page); }));
}

void FeedModel::failed(Side side, const Parameters& page) {
    _load->isReading[side] = false;
    _hasFailed = true;
    Q_EMIT changed();
    // The service may have forgotten the place at which an earlier run ended.
    if (_rows.isEmpty() && !page.empty() && Host::shared().isReady()) {
        restart({});
    }
}

void FeedModel::received(Side side, const Parameters& page, const Rows& records,
                         const std::optional<Metadata>& metadata) {
    const bool isFirst = _rows.isEmpty();
    const bool isNewest = side == Before && page.empty();
    QList<Row> rows;
    for (const auto& record : records) {
        // The feed may have moved on between two pages.
        if (_load->known.insert(*record->post->postId).second) {
            rows.append({record->post, record->shown, QString::fromStdString(queryString(page))});
            addToggles(rows.back(), _load.get());
        }
    }
    if (isNewest && rows.size() == static_cast<qsizetype>(records.size()) && !isFirst) {
        restart({}); // more is new than one page
        return;
    }
    _load->isReading[side] = false;
    insert(side == Before ? 0 : rowCount(), rows);
    const Metadata beside = metadata ? *metadata : Metadata(Metadata::Values());
    if (isFirst || side == Before) {
        _load->pages[Before] = isNewest ? std::nullopt : beside.previousPageParameters(pageSize);
    }
    if (isFirst || side == Behind) {
        _load->pages[Behind] = beside.nextPageParameters(pageSize);
    }
    placeCards();
    Q_EMIT changed();
    passed(_shown);
}

void FeedModel::insert(int at, const QList<Row>& rows) {
    if (rows.isEmpty()) {
        return;
    }
    const int count = static_cast<int>(rows.size());
    const bool isBefore = at == 0 && !_rows.isEmpty();
    beginInsertRows({}, at, at + count - 1);
    _rows = _rows.first(at) + rows + _rows.sliced(at);
    endInsertRows();
    if (isBefore) {
        _shown += count;
        _atRest += count;
        Q_EMIT changed();
        Q_EMIT prepended();
    }
}

void FeedModel::passed(int row) {
    _shown = row;
    if (row < rowsAhead && _load->pages[Before]) {
        read(Before, *_load->pages[Before]);
    }
    if (row + rowsAhead >= rowCount() && _load->pages[Behind]) {
        read(Behind, *_load->pages[Behind]);
    }
}

void FeedModel::settled(int row) {
    if (row < 0 || row >= rowCount()) {
        return;
    }
    if (_rows.at(row).post) {
        QSettings().setValue("place/" + _path, _rows.at(row).page);
    }
    RemoteFile::forgetVideosFarAway();
    _atRest = row;
    Q_EMIT changed(); // the post at rest fetches its own video, at `High`
    auto next = _rows.cbegin() + row;
    for (const QueuePriority priority : {QueuePriority::Normal, QueuePriority::Low}) {
        next = std::find_if(next + 1, _rows.cend(),
                            [](const Row& one) { return one.post != nullptr; });
        if (next == _rows.cend()) {
            break;
        }
        RemoteFile::fetch(next->shown["video"].toString(), priority, [](const QUrl&) {});
    }
}

void FeedModel::looped(int row) {
    QVariantMap& shown = _rows[row].shown;
    Loops::count(shown["key"].toString());
    shown["loops"] = shown["loops"].toULongLong() + 1;
    Q_EMIT dataChanged(index(row), index(row));
}

void FeedModel::readChannel() {
    const auto heard = [this](const auto& channels, const auto&...) {
        const auto text = &QString::fromStdString;
        for (const auto& channel : channels) {
            const auto icon = channel->iconRetinaUrl;
            _channel = {{"name", text(channel->name)},
                        {"details", text(channel->channelDescription.value_or(""))},
                        {"color", text("#" + channel->fontColorHex)},
                        {"background", text("#" + channel->backgroundColorHex)},
                        {"icon", text(icon ? icon->absoluteString() : "")}};
        }
        Q_EMIT changed();
    };
    Host::endpoint("channels/" + _path.section('/', -1))
        ->request(std::make_shared<KLChannelParser>(), Host::completion(this, heard));
}

void FeedModel::readCards() {
    const auto heard = [this](const Rows& cards, const auto&...) {
        for (const auto& card : cards) {
            _load->cards.insert(card->shown["position"].toLongLong(), *card);
        }
        placeCards();
    };
    Host::endpoint("inserts/" + _path)
        ->request(std::make_shared<RowParser>(Row::ofCard), Host::completion(_load.get(), heard));
}

/// Each card goes behind as many posts as it says, once there are so many.
void FeedModel::placeCards() {
    qlonglong posts = 0;
    for (int row = 0; row < rowCount(); ++row) {
        posts += _rows.at(row).post ? 1 : 0;
        if (posts > 0 && _load->cards.contains(posts)) {
            insert(row + 1, {_load->cards.take(posts)});
        }
    }
}

void FeedModel::closeCard(int row) {
    beginRemoveRows({}, row, row);
    const Row card = _rows.takeAt(row);
    endRemoveRows();
    const auto refused = [=, this] { insert(std::min(row, rowCount()), {card}); };
    Host::endpoint(card.shown["closePath"].toString(), Method::POST)
        ->request(std::make_shared<KLEmptyParser>(),
                  Host::completion(
                      _load.get(), [](const auto&...) {}, refused));
}
