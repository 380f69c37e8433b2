#include "FeedModel.hpp"

#include "Loops.hpp"
#include "RemoteFile.hpp"
#include "RowParsers.hpp"
#include "Toggle.hpp"

#include <algorithm>
#include <QSettings>

using namespace KeloAPI;

namespace {

constexpr std::int64_t pageSize = 10;
/// How many rows before the end the next page is read.
constexpr int rowsAhead = 6;

/// Paging parameters as the settings keep them.
QVariantMap keptOf(const Parameters& page) {
    QVariantMap kept;
    for (const auto& [name, value] : page) {
        const auto* text = std::get_if<std::string>(&value.held());
        const auto* number = std::get_if<std::int64_t>(&value.held());
        kept.insert(QString::fromStdString(name), text     ? QString::fromStdString(*text)
                                                  : number ? QString::number(*number)
                                                           : QString());
    }
    return kept;
}

/// Those of the page at which the feed was left. All are texts: a query has only texts.
Parameters pageOf(const QVariantMap& kept) {
    Parameters page;
    for (auto one = kept.begin(); one != kept.end(); ++one) {
        page.emplace(one.key().toStdString(), one.value().toString().toStdString());
    }
    return page;
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

/// Gives the post its buttons.
void addToggles(Row& row, QObject* owner) {
    const auto add = [&row](const char* name, Toggle* toggle) {
        row.shown[name] = QVariant::fromValue(toggle);
    };
    const auto post = row.post;
    add("like",
        new Toggle(owner, post->liked.value_or(false), [post](bool on, const auto& completion) {
            LikeActionEndpoint::create(post)->toggle(on, completion);
        }));
    add("rekelo", new Toggle(owner, post->rekeloed(), [post](bool on, const auto& completion) {
            RekeloActionEndpoint::create(post)->toggle(on, [=](const auto& result) {
                if (const auto* success = result.success()) {
                    post->currentUserRekelo = on ? success->item : nullptr;
                }
                completion(result);
            });
        }));
    add("less", new Toggle(owner, false, [post](bool on, const auto& completion) {
            RecommendationsEndpoint::create()->addPostFeedback(
                *post->postId, on ? RecommendationBoost::Negative : RecommendationBoost::Neutral,
                completion);
        }));
    add("follow", followOf(row.shown["authorId"].toString().toStdString()));
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
    restart(pageOf(QSettings().value("place/" + _path).toMap()));
    if (path.startsWith("timelines/channels/")) {
        readChannel(path.section('/', -1).toStdString());
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
    endpoint->request(
        std::make_shared<PostRowParser>(),
        Host::completion(
            _load.get(),
            [this, side, page](const Rows& records, const auto& metadata, const auto&...) {
                received(side, page, records, metadata);
            },
            [this, side, page] { failed(side, page); }));
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
            rows.append({record->post, record->shown, keptOf(page)});
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
    if (isBefore) {
        Q_EMIT aboutToPrepend();
    }
    beginInsertRows({}, at, at + count - 1);
    _rows = _rows.first(at) + rows + _rows.sliced(at);
    endInsertRows();
    if (isBefore) {
        _shown += count;
        _atRest += count;
        Q_EMIT changed();
        Q_EMIT prepended(count);
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
    countLoop(shown["key"].toString());
    shown["loops"] = shown["loops"].toULongLong() + 1;
    Q_EMIT dataChanged(index(row), index(row));
}

/// Reads what is at a path; `use` gets the records.
template <class P, class Use>
void FeedModel::readRecords(const std::string& path, Use use) {
    const auto endpoint = Endpoint::create(Api::session(SessionType::Authenticated));
    endpoint->setPath(path);
    endpoint->request(std::make_shared<P>(),
                      Host::completion(_load.get(), [use](const auto& records, const auto&...) {
                          use(records);
                      }));
}

void FeedModel::readChannel(const std::string& id) {
    readRecords<KLChannelParser>("channels/" + id, [this](const auto& channels) {
        const KLChannel& channel = *channels.at(0);
        const auto text = &QString::fromStdString;
        _channel = {
            {"name", text(channel.name)},
            {"details", text(channel.channelDescription.value_or(""))},
            {"color", text("#" + channel.fontColorHex)},
            {"background", text("#" + channel.backgroundColorHex)},
            {"icon", text(channel.iconRetinaUrl ? channel.iconRetinaUrl->absoluteString() : "")}};
        Q_EMIT changed();
    });
}

void FeedModel::readCards() {
    readRecords<CardRowParser>("inserts/" + _path.toStdString(), [this](const auto& cards) {
        for (const auto& card : cards) {
            _load->cards.insert(card->shown["position"].toLongLong(), *card);
        }
        placeCards();
    });
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
    const Row closed = _rows.takeAt(row);
    endRemoveRows();
    const auto endpoint = Endpoint::create(Api::session(SessionType::Authenticated));
    endpoint->setPath(closed.shown["closePath"].toString().toStdString());
    endpoint->setMethod(Method::POST);
    endpoint->request(std::make_shared<KLEmptyParser>(),
                      Host::completion(
                          _load.get(), [](const auto&...) {},
                          [=, this] { insert(std::min(row, rowCount()), {closed}); }));
}
