#include "Records.hpp"

namespace KeloViewer {

using namespace KeloAPI;

namespace {

/// The parsed object; null where the parser fails.
template <class P>
std::shared_ptr<typename P::T> readable(const P& parser, const JsonObject& json) {
    try {
        return parser.parse(json);
    } catch (const JsonParseError&) {
        return nullptr;
    }
}

QString qtText(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString textAt(const JsonObject& json, const char* key) {
    return qtText(json[key].text().value_or(""));
}

QString pictureAt(const JsonObject& json, const char* key) {
    return pictureSource(URL::parse(json[key].text().value_or("")));
}

/// The "count" of the object under a key.
qlonglong countAt(const JsonObject& json, const char* key) {
    const auto object = json[key].object();
    return object ? (*object)["count"].integer().value_or(0) : 0;
}

/// The text with its links set off.
QString linked(const std::string& plain, const std::vector<std::shared_ptr<KLEntity>>& entities) {
    const QString all = qtText(plain);
    QString marked;
    qsizetype end = 0;
    for (const auto& entity : entities) {
        const Range range = entity->range; // in UTF-16 units, as in a QString
        if (range.location >= end) {
            marked += all.mid(end, range.location - end).toHtmlEscaped() + "<a href=\"" +
                      qtText(entity->applicationLink()).toHtmlEscaped() + "\">" +
                      all.mid(range.location, range.length).toHtmlEscaped() + "</a>";
            end = range.location + range.length;
        }
    }
    return marked + all.mid(end).toHtmlEscaped();
}

QString venueIn(const JsonObject& json) {
    const auto venue = readable(KLVenueParser(), json);
    return !venue ? QString() : qtText(venue->name + (venue->city ? ", " + *venue->city : ""));
}

/// The pictures of the records of the page under a key, and where each leads.
QVariantList picturesAt(const JsonObject& json, const char* key, const char* pictureKey) {
    QVariantList pictures;
    const auto page = json[key].object();
    const auto records = page ? (*page)["records"].objects() : std::nullopt;
    for (const JsonObject record : records.value_or(JsonObjectList())) {
        pictures.append(
            QVariantMap{{"source", pictureAt(record, pictureKey)},
                        {"link", "kelo://user-id/" + qtText(record["userId"].description())}});
    }
    return pictures;
}

} // namespace

QString pictureSource(const std::optional<URL>& url) {
    return url ? "image://kelo/" + qtText(url->absoluteString()) : QString();
}

std::shared_ptr<FeedPost> FeedPostParser::parse(const JsonObject& json) const {
    auto made = std::make_shared<FeedPost>();
    made->post = PostParser().parse(json);
    const KLWatchPost& post = *made->post;
    if (const auto loops = json["loops"].object()) {
        made->loops = readable(LoopDataParser(), *loops);
    }
    made->authorId = parseId(json["userId"]).value_or("");
    made->likes = countAt(json, "likes");
    made->rekelos = countAt(json, "reposts");

    const auto audioJson = json["audio"].object();
    const auto audio = audioJson ? KLPostAudioMetadata::fromJSON(*audioJson) : nullptr;
    const auto bylineJson = json["byline"].object();
    const auto byline = bylineJson ? readable(KLBylineParser(), *bylineJson) : nullptr;
    const std::string caption = post.caption.value_or("");
    const auto entities = json["entities"].objects().value_or(JsonObjectList());
    made->shown = {
        {"key", qtText(*post.postId)},
        {"author", qtText(post.user->username.value_or(""))},
        {"authorId", qtText(made->authorId)},
        {"avatar", pictureAt(json, "avatarUrl")},
        {"thumbnail", pictureAt(json, "thumbnailUrl")},
        {"caption", linked(caption, KLEntityParser(caption).parseArray(entities, true))},
        {"byline", byline ? linked(byline->text, byline->entities) : ""},
        {"bylineIcon", byline ? pictureSource(byline->iconUrl) : ""},
        {"venue", venueIn(json)},
        {"music", audio ? qtText(audio->artistName + " – " + audio->trackName) : ""},
        {"albumArt", audio ? pictureSource(audio->albumArtUrl) : ""},
        {"channel", textAt(json, "channel")},
        {"channelId", qtText(parseId(json["channelId"]).value_or(""))},
    };
    return made;
}

std::shared_ptr<FeedCard> FeedCardParser::parse(const JsonObject& json) const {
    auto made = std::make_shared<FeedCard>();
    const auto closePath = json["closeUrlPath"].text();
    made->position = json["position"].integer().value_or(0);
    made->closePath = closePath ? std::optional<std::string>(*closePath) : std::nullopt;
    made->shown = {{"key", textAt(json, "reference")},
                   {"title", textAt(json, "title")},
                   {"details", textAt(json, "description")},
                   {"link", textAt(json, "link")},
                   {"linkTitle", ""},
                   {"pictures", QVariantList()},
                   {"isCloseable", closePath.has_value()}};
    const auto type = json["type"].text();
    if (type == "urlAction") {
        const auto action = KLUrlActionParser().parse(json);
        made->shown["link"] = qtText(action->actionUrl.absoluteString());
        made->shown["linkTitle"] = qtText(action->actionTitle);
    } else if (type == "solicitation") {
        KLSolicitationParser().parse(json); // throws where it is none
        made->shown["title"] = "Do you like it here?";
        made->shown["details"] = "Tell others what you think of this app.";
    } else if (type == "postsMosaic") {
        made->shown["linkTitle"] = "See all";
        made->shown["pictures"] = picturesAt(json, "posts", "thumbnailUrl");
    } else if (type == "userMosaic") {
        made->shown["pictures"] = picturesAt(json, "users", "avatarUrl");
    } else {
        throw JsonParseError(JsonParseError::IncorrectType);
    }
    return made;
}

} // namespace KeloViewer
