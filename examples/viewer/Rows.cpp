#include "Rows.hpp"

using namespace KeloAPI;

namespace {

/// What the parser makes of the object; null where there is none that it can read.
template <class P>
std::shared_ptr<typename P::T> parsed(const std::optional<JsonObject>& json) {
    try {
        return json ? P().parse(*json) : nullptr;
    } catch (const JsonParseError&) {
        return nullptr;
    }
}

/// The text, or the number's text, under a key.
QString textAt(const JsonObject& json, const char* key) {
    return QString::fromStdString(PostParser().parseId(json[key]).value_or(""));
}

QString textOf(const std::optional<URL>& url) {
    return url ? QString::fromStdString(url->absoluteString()) : QString();
}

/// The "count" of the object under a key.
qlonglong countAt(const JsonObject& json, const char* key) {
    const auto object = json[key].object();
    return object ? (*object)["count"].integer().value_or(0) : 0;
}

/// The loops until now: those of the record, and what has come since at its rate.
qulonglong loopsIn(const JsonObject& json) {
    const auto loops = parsed<LoopDataParser>(json["loops"].object());
    const double velocity = loops ? loops->velocity.doubleValue() : -1;
    const bool canGuess = velocity >= 0 && velocity < 1e6;
    return loops ? loops->count.uint64Value() + (canGuess ? loops->loopsSinceCreation() : 0) : 0;
}

/// The text with its links set off.
QString linked(const std::string& plain, const std::vector<std::shared_ptr<KLEntity>>& entities) {
    const QString all = QString::fromStdString(plain);
    QString marked;
    qsizetype end = 0;
    for (const auto& entity : entities) {
        const Range range = entity->range; // in UTF-16 units, as in a QString
        if (range.location >= end) {
            const QString link = QString::fromStdString(entity->applicationLink());
            marked += all.mid(end, range.location - end).toHtmlEscaped() + "<a href=\"" +
                      link.toHtmlEscaped() + "\">" +
                      all.mid(range.location, range.length).toHtmlEscaped() + "</a>";
            end = range.location + range.length;
        }
    }
    return marked + all.mid(end).toHtmlEscaped();
}

/// The pictures of the records of the page under a key, and where each leads.
QVariantList picturesAt(const JsonObject& json, const char* key, const char* pictureKey) {
    QVariantList pictures;
    const auto page = json[key].object();
    const auto records = page ? (*page)["records"].objects() : std::nullopt;
    for (const JsonObject record : records.value_or(JsonObjectList())) {
        pictures.append(QVariantMap{{"url", textAt(record, pictureKey)},
                                    {"link", "kelo://user-id/" + textAt(record, "userId")}});
    }
    return pictures;
}

} // namespace

std::shared_ptr<Row> Row::ofPost(const JsonObject& json) {
    const auto text = &QString::fromStdString;
    const auto post = PostParser().parse(json);
    const auto audioJson = json["audio"].object();
    const auto audio = audioJson ? KLPostAudioMetadata::fromJSON(*audioJson) : nullptr;
    const auto byline = parsed<KLBylineParser>(json["byline"].object());
    const auto venue = parsed<KLVenueParser>(json);
    const std::string caption = post->caption.value_or("");
    const auto entities = json["entities"].objects().value_or(JsonObjectList());
    QVariantMap shown = {
        {"key", text(*post->postId)},
        {"author", text(post->user->username.value_or(""))},
        {"authorId", textAt(json, "userId")},
        {"avatar", textAt(json, "avatarUrl")},
        {"thumbnail", textAt(json, "thumbnailUrl")},
        {"video", text(post->videoUrl.value_or(""))},
        {"caption", linked(caption, KLEntityParser(caption).parseArray(entities, true))},
        {"byline", byline ? linked(byline->text, byline->entities) : ""},
        {"bylineIcon", byline ? textOf(byline->iconUrl) : ""},
        {"venue", venue ? text(venue->name + (venue->city ? ", " + *venue->city : "")) : ""},
        {"music", audio ? text(audio->artistName + " – " + audio->trackName) : ""},
        {"albumArt", audio ? textOf(audio->albumArtUrl) : ""},
        {"channel", textAt(json, "channel")},
        {"channelId", textAt(json, "channelId")},
        {"loops", loopsIn(json)},
        {"likes", countAt(json, "likes") - (post->liked.value_or(false) ? 1 : 0)},
        {"rekelos", countAt(json, "reposts") - (post->rekeloed() ? 1 : 0)},
    };
    return std::make_shared<Row>(Row{post, std::move(shown), {}});
}

std::shared_ptr<Row> Row::ofCard(const JsonObject& json) {
    const QString type = textAt(json, "type");
    QVariantMap shown = {
        {"key", textAt(json, "reference")},
        {"position", qlonglong{json["position"].integer().value_or(0)}},
        {"closePath", textAt(json, "closeUrlPath")},
        {"title", textAt(json, "title")},
        {"details", textAt(json, "description")},
        {"link", textAt(json, "link")},
        {"linkTitle", ""},
        {"pictures",
         picturesAt(json, "posts", "thumbnailUrl") + picturesAt(json, "users", "avatarUrl")},
    };
    if (type == "urlAction") {
        const auto action = KLUrlActionParser().parse(json);
        shown["link"] = textOf(action->actionUrl);
        shown["linkTitle"] = QString::fromStdString(action->actionTitle);
    } else if (type == "solicitation") {
        shown["title"] = "Do you like it here?";
        shown["details"] = "Tell others what you think of this app.";
    } else if (type == "postsMosaic") {
        shown["linkTitle"] = "See all";
    } else if (type != "userMosaic") {
        throw JsonParseError(JsonParseError::IncorrectType);
    }
    return std::make_shared<Row>(Row{nullptr, std::move(shown), {}});
}
