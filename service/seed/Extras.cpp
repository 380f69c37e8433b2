#include "service/seed/Captions.hpp"
#include "service/seed/Random.hpp"
#include "service/seed/Seed.hpp"

#include <optional>
#include <string>
#include <vector>

namespace KeloService {
namespace {

constexpr const char* catalogue = R"sql(
WITH categories (id, name) AS (VALUES
    ('4bf58dd8d48988d1e0931735', 'Coffee'), ('4bf58dd8d48988d163941735', 'Park'),
    ('4bf58dd8d48988d1e2931735', 'Gallery'), ('4bf58dd8d48988d15e941735', 'Beach'),
    ('4bf58dd8d48988d129951735', 'Train station'))
INSERT INTO venues
SELECT '50a1f0c2e4b000000000000' || column1, column2, column3, column4, column5, column6, column7,
    column8, (SELECT id FROM categories WHERE name = column9), column9 FROM (VALUES
    ('1', 'Café Ampulheta', 'Rua da Bica 12', 'Lisbon', NULL, 'Portugal', 38.7099, -9.1466,
     'Coffee'),
    ('2', 'Jardim do Torel', NULL, 'Lisbon', NULL, 'Portugal', 38.7181, -9.1414, 'Park'),
    ('3', 'The Long Exposure', '44 Bond St', 'Bristol', NULL, 'United Kingdom', 51.4563, -2.5886,
     'Gallery'),
    ('4', 'Praia do Norte', NULL, 'Nazaré', 'Leiria', 'Portugal', 39.6053, -9.0852, 'Beach'),
    ('5', 'Bahnhof Chur', 'Bahnhofplatz 1', 'Chur', 'GR', 'Switzerland', 46.8533, 9.5288,
     'Train station'),
    ('6', '京都ロープ喫茶', '河原町通 3-1', '京都', NULL, '日本', 35.0045, 135.7690, 'Coffee'),
    ('7', 'Labadi Beach', 'La Rd', 'Accra', NULL, 'Ghana', 5.5600, -0.1440, 'Beach'),
    ('8', 'Zilker Meadow', '2100 Barton Springs Rd', 'Austin', 'TX', 'United States', 30.2669,
     -97.7729, 'Park'),
    ('9', 'My sofa', NULL, 'Brno', NULL, 'Czechia', 49.1951, 16.6068, NULL),
    ('a', 'Galleria "Kehä"', 'Fredrikinkatu 9', 'Helsinki', NULL, 'Finland', 60.1640, 24.9370,
     'Gallery'),
    ('b', 'Estação de São Bento', 'Praça de Almeida Garrett', 'Porto', NULL, 'Portugal', 41.1456,
     -8.6109, 'Train station'),
    ('c', 'Null Island Buoy', NULL, 'At sea', NULL, '', 0, 0, NULL));
INSERT INTO tracks VALUES
    (3001, 'Six Seconds', 'The Short Attention', 909253, 'kelo-10', 1, '/media/albums/3001.png'),
    (3002, 'Escada Rolante', 'Banda do Poço', 1440833, 'kelo-10', 0, '/media/albums/3002.png'),
    (3003, 'Tin Roof, Heavy Rain', 'Freya & the Wheels', NULL, NULL, 0, NULL),
    (3004, '手をたたく', '夜の線路', 5500127, 'kelo-10', 1, '/media/albums/3004.png'),
    (3005, 'Kitchen Drums, Vol. 2', 'Oskar', NULL, NULL, 1, NULL),
    (3006, 'Loop de Loop 🎢', 'DJ Ampersand', 18446744073, 'kelo-10', 0, '/media/albums/3006.png');
INSERT INTO sounds
SELECT column1, column2, '/media/sounds/' || column1 || '.m4a', column3,
    (SELECT min(postId) FROM posts) + column4 * 4111 FROM (VALUES
    (8001, 'Air horn', 1, NULL), (8002, 'Record scratch', 1, NULL),
    (8003, 'Sad trombone', 0, NULL), (8004, 'Cat, offended', 1, 12),
    (8005, 'Crowd goes "oooh"', 0, 77), (8006, 'Kettle at full boil', 0, 301),
    (8007, 'Drum roll 🥁', 1, NULL), (8008, 'Rain on a tin roof', 0, NULL),
    (8009, 'Ding', 0, NULL), (8010, '¡Vámonos!', 0, 640), (8011, '雷', 0, 918),
    (8012, 'Tape rewind', 1, NULL), (8013, 'Sheep, distant', 0, 1203),
    (8014, 'Six seconds of nothing', 0, NULL));
INSERT INTO longforms VALUES
    ('lf-harbour-dawn', 48211), ('lf-clay-orchestra', 7310), ('lf-night-market', 1250733),
    ('lf-skate-diary-3', 902), ('lf-sheepdog-final', 56), ('lf-unseen', 0);
-- A post has one byline: the first that fits.
INSERT INTO bylines
SELECT postId, body || name, '/media/icons/byline-pick.png', length(body), length(body || name),
    'channel', channelId, name
FROM posts JOIN channels USING (channelId) JOIN (SELECT '🏆 Editors’ pick in ' AS body)
WHERE pickRank IS NOT NULL;
INSERT OR IGNORE INTO bylines (postId, body, iconPath)
SELECT postId, '🔥 On fire right now', '/media/icons/byline-fire.png' FROM posts WHERE onFire;
)sql";

constexpr const char* fanByline = R"sql(
INSERT OR IGNORE INTO bylines
SELECT ?1, body || username, '/media/icons/byline-fan.png', length(body), length(body || username),
    'mention', userId, username
FROM users JOIN (SELECT '👀 Looped again and again by ' AS body) WHERE userId = ?2)sql";

/// Every row's first column.
std::vector<std::string> column(Database& database, const std::string& sql) {
    std::vector<std::string> texts;
    Query query = database.query(sql);
    while (query.next()) {
        texts.push_back(query.text(0));
    }
    return texts;
}

} // namespace

void seedExtras(Database& database) {
    database.execute(catalogue);
    const auto venues = column(database, "SELECT venueId FROM venues ORDER BY 1");
    const auto tracks = column(database, "SELECT trackId FROM tracks ORDER BY 1");
    // Random numbers of its own: what posts say does not depend on what is beside them.
    Random random(20160302);
    for (const std::string& postId : column(database, "SELECT postId FROM posts ORDER BY 1")) {
        std::optional<std::string> venueId;
        if (random.oneIn(3)) {
            venueId = random.oneOf(std::span(venues));
        }
        std::optional<std::string> trackId;
        if (random.oneIn(4)) {
            trackId = random.oneOf(std::span(tracks));
        }
        database.run("UPDATE posts SET venueId = ?2, trackId = ?3 WHERE postId = ?1", postId,
                     venueId, trackId);
        const bool hasFan = random.oneIn(10);
        const std::int64_t fan = firstSeededUserId + random.below(std::ssize(people()));
        if (hasFan) {
            database.run(fanByline, postId, fan);
        }
    }
    database.execute("UPDATE tags SET postCount = "
                     "(SELECT count(*) FROM postTags WHERE postTags.tagId = tags.tagId)");
}

} // namespace KeloService
