#include "service/seed/Places.hpp"

namespace KeloService {
namespace {

constexpr CategorySeed everyCategory[] = {
    {"4bf58dd8d48988d1e0931735", "Coffee"},        {"4bf58dd8d48988d163941735", "Park"},
    {"4bf58dd8d48988d1e2931735", "Gallery"},       {"4bf58dd8d48988d15e941735", "Beach"},
    {"4bf58dd8d48988d129951735", "Train station"},
};
constexpr std::size_t none = std::size(everyCategory);

constexpr PlaceSeed everyPlace[] = {
    {"50a1f0c2e4b0000000000001", "Café Ampulheta", "Rua da Bica 12", "Lisbon", "", "Portugal",
     38.7099, -9.1466, 0},
    {"50a1f0c2e4b0000000000002", "Jardim do Torel", "", "Lisbon", "", "Portugal", 38.7181, -9.1414,
     1},
    {"50a1f0c2e4b0000000000003", "The Long Exposure", "44 Bond St", "Bristol", "", "United Kingdom",
     51.4563, -2.5886, 2},
    {"50a1f0c2e4b0000000000004", "Praia do Norte", "", "Nazaré", "Leiria", "Portugal", 39.6053,
     -9.0852, 3},
    {"50a1f0c2e4b0000000000005", "Bahnhof Chur", "Bahnhofplatz 1", "Chur", "GR", "Switzerland",
     46.8533, 9.5288, 4},
    {"50a1f0c2e4b0000000000006", "京都ロープ喫茶", "河原町通 3-1", "京都", "", "日本", 35.0045,
     135.7690, 0},
    {"50a1f0c2e4b0000000000007", "Labadi Beach", "La Rd", "Accra", "", "Ghana", 5.5600, -0.1440, 3},
    {"50a1f0c2e4b0000000000008", "Zilker Meadow", "2100 Barton Springs Rd", "Austin", "TX",
     "United States", 30.2669, -97.7729, 1},
    {"50a1f0c2e4b0000000000009", "My sofa", "", "Brno", "", "Czechia", 49.1951, 16.6068, none},
    {"50a1f0c2e4b000000000000a", "Galleria \"Kehä\"", "Fredrikinkatu 9", "Helsinki", "", "Finland",
     60.1640, 24.9370, 2},
    {"50a1f0c2e4b000000000000b", "Estação de São Bento", "Praça de Almeida Garrett", "Porto", "",
     "Portugal", 41.1456, -8.6109, 4},
    {"50a1f0c2e4b000000000000c", "Null Island Buoy", "", "At sea", "", "", 0, 0, none},
};

} // namespace

std::span<const CategorySeed> categories() {
    return everyCategory;
}

std::span<const PlaceSeed> places() {
    return everyPlace;
}

} // namespace KeloService
