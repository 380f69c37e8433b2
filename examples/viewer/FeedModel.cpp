#include "FeedModel.hpp"

#include "Files.hpp"

#include <algorithm>
#include <QPointer>
#include <QSettings>

namespace KeloViewer {

using namespace KeloAPI;

namespace {

constexpr std::int64_t pageSize = 10;
/// How many rows before the end the next page is read.
constexpr int rowsAhead = 6;
/// More videos than that are waiting only after long scrolling: most of them are far away by then.
constexpr std::size_t mostVideosWaiting = 6;

/// The loops until now: those of the record, and what has come since at its rate.
qulonglong loopsUntilNow(const std::shared_ptr<LoopData>& loops) {
    const double velocity = loops ? loops->velocity.doubleValue() : -1;
    const bool canGuess = velocity >= 0 && velocity < 1e6;
    return loops ? loops->count.uint64Value() + (canGuess ? loops->loopsSinceCreation() : 0) : 0;
}

/// Paging parameters as the settings keep them.
QVariantMap keptOf(const Parameters& paging) {
    QVariantMap kept;
    for (const auto& [name, value] : paging) {
        const auto* text = std::get_if<std::string>(&value.held());
        const auto* number = std::get_if<std::int64_t>(&value.held());
        kept.insert(QString::fromStdString(name), text     ? QString::fromStdString(*text)
                                                  : number ? QString::number(*number)
                                                           : QString());
    }
    return kept;
}

/// All of them as texts: a query has only texts.
Parameters pagingOf(const QVariantMap& kept) {
    Parameters paging;
    for (auto one = kept.begin(); one != kept.end(); ++one) {
        paging.emplace(one.key().toStdString(), one.value().toString().toStdString());
    }
    return paging;
}

/// Whether the user follows an author, as far as this run knows: records do not tell.
std::shared_ptr<Toggle> followOf(const std::string& authorId) {
    static std::map<std::string, std::shared_ptr<Toggle>> known;
    auto& follow = known[authorId];
    return follow ? follow : follow = std::make_shared<Toggle>();
}

} // namespace

FeedModel::FeedModel(QObject* parent)
    : QAbstractListModel(parent) {
    connect(&Host::shared(), &Host::retryWanted, this, [this] {
        if (_rows.empty()) {
            restart(_start);
        } else {
            passed(_shown);
            settled(_shown);
        }
    });
}

QHash<int, QByteArray> FeedModel::roleNames() const {
    return {{IsCard, "isCard"},   {Record, "record"},     {Video, "video"},
            {Loops, "loops"},     {Likes, "likes"},       {Liked, "liked"},
            {Rekelos, "rekelos"}, {Rekeloed, "rekeloed"}, {Following, "following"},
            {LessOfIt, "less"}};
}

QVariant FeedModel::data(const QModelIndex& index, int role) const {
    const Row& row = *_rows.at(static_cast<std::size_t>(index.row()));
    if (role == IsCard) {
        return row.card != nullptr;
    }
    if (row.card) {
        return role == Record ? row.card->shown : QVariant();
    }
    switch (role) {
    case Record:
        return row.post->shown;
    case Video:
        return row.video;
    case Loops:
        return loopsUntilNow(row.post->loops);
    case Likes:
        return row.post->likes + row.like.added();
    case Liked:
        return row.like.shown;
    case Rekelos:
        return row.post->rekelos + row.rekelo.added();
    case Rekeloed:
        return row.rekelo.shown;
    case Following:
        return row.follow->shown;
    case LessOfIt:
        return row.less.shown;
    default:
        return {};
    }
}

void FeedModel::setPath(const QString& path) {
    if (path.isEmpty() || std::exchange(_path, path) == path) {
        return;
    }
    if (path.startsWith("timelines/channels/")) {
        readChannel(path.section('/', -1).toStdString());
    }
    restart(pagingOf(QSettings().value("place/" + _path).toMap()));
}

void FeedModel::restart(const Parameters& start) {
    beginResetModel();
    _rows.clear();
    endResetModel();
    _known.clear();
    _cards.clear();
    ++_generation;
    _isReading[Before] = _isReading[Behind] = false;
    _pages[Before].reset();
    _pages[Behind].reset();
    _start = start;
    read(Behind, start);
    if (start.empty() && !_path.contains('/')) {
        readCards();
    }
}

void FeedModel::read(Side side, const Parameters& paging) {
    if (std::exchange(_isReading[side], true)) {
        return;
    }
    _hasFailed = false;
    Q_EMIT changed();
    // The endpoint's own `fetch` reads the library's posts alone: here it gives the path and the
    // usual parameters, and the parser is the viewer's own.
    const auto page = TimelineEndpoint::create(_path.toStdString());
    Parameters parameters = page->parameters();
    parameters.insert_or_assign("size", pageSize);
    for (const auto& [name, value] : paging) {
        parameters.insert_or_assign(name, value);
    }
    page->setParameters(std::move(parameters));
    page->request(std::make_shared<FeedPostParser>(),
                  [model = QPointer(this), generation = _generation, side,
                   paging](const Posts& posts, const std::optional<Metadata>& metadata, const auto&,
                           const std::optional<Error>& error) {
                      if (!model || generation != model->_generation) {
                          return;
                      }
                      Host::shared().hear(
                          error, [&] { model->received(side, paging, posts, metadata); },
                          [model, side, paging] {
                              if (model) {
                                  model->failed(side, paging);
                              }
                          });
                  });
}

void FeedModel::failed(Side side, const Parameters& paging) {
    _isReading[side] = false;
    _hasFailed = true;
    Q_EMIT changed();
    // The service may have forgotten the place at which an earlier run ended.
    if (_rows.empty() && !paging.empty() && Host::shared().isReady()) {
        restart({});
    }
}

void FeedModel::received(Side side, const Parameters& paging, const Posts& posts,
                         const std::optional<Metadata>& metadata) {
    const auto beyond = [&](Side there) {
        return !metadata         ? std::nullopt
               : there == Before ? metadata->previousPageParameters(pageSize)
                                 : metadata->nextPageParameters(pageSize);
    };
    _isReading[side] = false;
    const bool isFirst = _rows.empty();
    const bool isNewest = side == Before && paging.empty();
    auto rows = rowsOf(posts, paging);
    if (isNewest && rows.size() == posts.size() && !isFirst) {
        restart({}); // more is new than one page
        return;
    }
    insert(side == Before ? 0 : rowCount(), std::move(rows));
    if (isFirst) {
        _pages[Before] = beyond(Before);
        _pages[Behind] = beyond(Behind);
    } else {
        _pages[side] = isNewest ? std::nullopt : beyond(side);
    }
    placeCards();
    Q_EMIT changed();
    passed(_shown);
}

std::vector<FeedModel::RowPointer> FeedModel::rowsOf(const Posts& posts, const Parameters& page) {
    std::vector<RowPointer> rows;
    for (const auto& post : posts) {
        if (!_known.insert(post->post->postId.value_or("")).second) {
            continue; // the feed has moved on between two pages
        }
        auto row = std::make_shared<Row>();
        row->post = post;
        row->page = page;
        row->like = Toggle(post->post->liked.value_or(false));
        row->rekelo = Toggle(post->post->rekeloed());
        row->follow = followOf(post->authorId);
        rows.push_back(std::move(row));
    }
    return rows;
}

void FeedModel::insert(int at, std::vector<RowPointer> rows) {
    if (rows.empty()) {
        return;
    }
    const int count = static_cast<int>(rows.size());
    const bool isBefore = at == 0 && !_rows.empty();
    if (isBefore) {
        Q_EMIT aboutToPrepend();
    }
    beginInsertRows({}, at, at + count - 1);
    _rows.insert(_rows.begin() + at, std::make_move_iterator(rows.begin()),
                 std::make_move_iterator(rows.end()));
    endInsertRows();
    if (isBefore) {
        _shown += count;
        Q_EMIT prepended(count);
    }
}

void FeedModel::passed(int row) {
    _shown = row;
    if (row < rowsAhead && _pages[Before]) {
        read(Before, *_pages[Before]);
    }
    if (row + rowsAhead >= rowCount() && _pages[Behind]) {
        read(Behind, *_pages[Behind]);
    }
}

void FeedModel::settled(int row) {
    if (row < 0 || row >= rowCount()) {
        return;
    }
    const auto place = _rows.begin() + row;
    if ((*place)->post) {
        QSettings().setValue("place/" + _path, keptOf((*place)->page));
    }
    if (videosInQueue() > mostVideosWaiting) {
        forgetQueuedVideos();
    }
    auto next = place;
    for (const QueuePriority priority :
         {QueuePriority::High, QueuePriority::Normal, QueuePriority::Low}) {
        next = std::find_if(next, _rows.end(), [](const RowPointer& one) { return !one->card; });
        if (next != _rows.end()) {
            fetchVideo(*next++, priority);
        }
    }
}

void FeedModel::fetchVideo(const RowPointer& row, QueuePriority priority) {
    if (row->video.isEmpty() && row->post->post->videoUrl) {
        fetchFile(*row->post->post->videoUrl, priority,
                  [model = QPointer(this), row](const QString& path) {
                      row->video = path;
                      if (model) {
                          model->rowsChanged();
                      }
                  });
    }
}

void FeedModel::refresh() {
    read(Before, {});
}

/// Reads what is at a path; `use` gets the items if the model is still there.
template <class P, class Use>
void FeedModel::readRecords(const std::string& path, Use use) {
    const auto endpoint = Endpoint::create(Api::session(SessionType::Authenticated));
    endpoint->setPath(path);
    endpoint->request(std::make_shared<P>(),
                      [model = QPointer(this), use](const auto& items, const auto&, const auto&,
                                                    const std::optional<Error>& error) {
                          Host::shared().hear(error, [&] {
                              if (model) {
                                  use(items);
                              }
                          });
                      });
}

void FeedModel::readChannel(const std::string& id) {
    readRecords<KLChannelParser>("channels/" + id, [this](const auto& channels) {
        const KLChannel& channel = *channels.at(0);
        const auto text = &QString::fromStdString;
        _channel = {{"name", text(channel.name)},
                    {"details", text(channel.channelDescription.value_or(""))},
                    {"color", text("#" + channel.fontColorHex)},
                    {"background", text("#" + channel.backgroundColorHex)},
                    {"icon", pictureSource(channel.iconRetinaUrl)}};
        Q_EMIT changed();
    });
}

void FeedModel::readCards() {
    readRecords<FeedCardParser>("inserts/" + _path.toStdString(), [this](const auto& cards) {
        _cards = cards;
        placeCards();
    });
}

/// Each card goes behind as many posts as it says, once there are so many.
void FeedModel::placeCards() {
    std::erase_if(_cards, [this](const std::shared_ptr<FeedCard>& card) {
        std::int64_t posts = 0;
        for (int at = 0; at < rowCount(); ++at) {
            posts += _rows[static_cast<std::size_t>(at)]->post ? 1 : 0;
            if (posts == card->position && posts > 0) {
                auto row = std::make_shared<Row>();
                row->card = card;
                insert(at + 1, {std::move(row)});
                return true;
            }
        }
        return false;
    });
}

void FeedModel::rowsChanged() {
    if (!_rows.empty()) {
        Q_EMIT dataChanged(index(0), index(rowCount() - 1));
    }
}

} // namespace KeloViewer
