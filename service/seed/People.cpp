#include "service/seed/Captions.hpp"

namespace KeloService {
namespace {

constexpr Person allPeople[] = {
    {"mara", "Six seconds at a time. Stop motion and bad puns 🎬", "Lisbon"},
    {"theo.loops", "I film my cat so you don't have to 🐈", "Ghent"},
    {"ines_b", "Dancer, teacher, night owl 💃🏽", "Porto"},
    {"kofi", "Football tricks from Accra ⚽️🇬🇭", "Accra"},
    {"yuki.draws", "線と色 · ink and colour", "京都"},
    {"bram", "Skateboards, scraped knees", "Utrecht"},
    {"lucía", "Cocina rápida, muy rápida 🍳", "Valencia"},
    {"anton_p", "Magic with coins and no hands", "Graz"},
    {"noor", "Paper, scissors, light", "Rotterdam"},
    {"sol", "Surf report nobody asked for 🌊", "Biarritz"},
    {"priya.makes", "Tiny clay things 🧱", "Pune"},
    {"oskar", "Drums on everything 🥁", "Malmö"},
    {"wei", "Street food, one bite", "Chengdu"},
    {"hana", "Two dogs, one sofa 🐕🐕", "Brno"},
    {"elif", "Calligraphy ✒️", "İzmir"},
    {"jonas.k", "Bike polo, cargo bikes, any bikes 🚲", "København"},
    {"amara", "Comedy in the kitchen", "Lagos"},
    {"rené", "Théâtre d'objets", "Nantes"},
    {"tamsin", "Gardens before and after 🌱", "Bristol"},
    {"diego", "Lucha, pero con títeres", "Puebla"},
    {"mikael", "Snow most of the year ❄️", "Kiruna"},
    {"zofia", "Animacja poklatkowa", "Łódź"},
    {"farid", "Parkour with my brother", "Marseille"},
    {"leilani", "Hula and hydrofoils 🌺", "Hilo"},
    {"gus", "Dad jokes at full speed", "Duluth"},
    {"sanne", "Ceramics that sometimes survive", "Delft"},
    {"ravi", "Beatbox + tabla", "Mumbai"},
    {"clara.w", "Slow things, sped up ⏩", "Bern"},
    {"tomás", "Luthier's bench", "Cremona"},
    {"aino", "Sauna, lake, repeat", "Tampere"},
    {"dmitri", "Chess traps in six seconds ♟️", "Tallinn"},
    {"pilar", "Flamenco at the bus stop", "Sevilla"},
    {"owen", "Sheepdog trials 🐑", "Powys"},
    {"mei", "Miniature kitchens", "Tainan"},
    {"salma", "Henna and geometry", "Fès"},
    {"viggo", "Brick films on a budget", "Odense"},
    {"nadia", "Make-up transformations 💄", "Tunis"},
    {"caleb", "Trick shots, mostly misses 🏀", "Tulsa"},
    {"ingrid", "Knitting faster than you think 🧶", "Bergen"},
    {"paolo", "Espresso physics ☕️", "Trieste"},
    {"thandi", "Choir warm-ups", "Durban"},
    {"luca", "Trains. Only trains. 🚂", "Chur"},
    {"freya", "Roller derby 🛼", "Leeds"},
    {"kenji", "Origami that moves", "奈良"},
    {"maya.r", "Science you can see 🔬", "Austin"},
    {"bilal", "Oud covers of pop songs", "Amman"},
    {"quiet_account", "", ""},
    {"the_weather_in_bergen", "It rains ☔️", "Bergen"},
};

constexpr ChannelTheme allThemes[] = {
    {"Comedy", "Jokes that fit into a loop", "F5A623", "comedy", {"comedy", "fail", "pun"}},
    {"Music",
     "Covers, beats and odd instruments",
     "9013FE",
     "music",
     {"music", "beatbox", "cover"}},
    {"Animals", "Mostly cats", "7ED321", "animals", {"cats", "dogs", "wildlife"}},
    {"Art", "Made by hand, filmed by frame", "BD10E0", "art", {"art", "stopmotion", "ink"}},
    {"Sports", "Tricks and near misses", "4A90E2", "sports", {"sports", "skate", "football"}},
    {"Food", "One bite, one loop", "D0021B", "food", {"food", "streetfood", "baking"}},
    {"Dance",
     "Steps to learn and steps to envy",
     "E94E77",
     "dance",
     {"dance", "flamenco", "street"}},
    {"Places", "Postcards that move", "50E3C2", "places", {"travel", "trains", "weather"}},
    {"Science", "See it happen", "417505", "science", {"science", "physics", "howto"}},
    {"Magic", "Watch the other hand", "000000", "magic", {"magic", "cards", "coins"}},
};

} // namespace

std::span<const Person> people() {
    return allPeople;
}

std::span<const ChannelTheme> channelThemes() {
    return allThemes;
}

} // namespace KeloService
