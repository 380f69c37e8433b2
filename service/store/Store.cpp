#include "service/store/Store.hpp"

#include "service/seed/Seed.hpp"

namespace KeloService {

Store::Store(const std::string& file)
    : database(file)
    , users(database)
    , sessions(database)
    , channels(database)
    , venues(database)
    , posts(database, venues)
    , feeds(database)
    , likes(database)
    , reposts(database)
    , follows(database)
    , feedback(database)
    , loops(database)
    , longforms(database)
    , sounds(database)
    , images(database)
    , closedInserts(database)
    , uploadFolder(file)
    , uploads(database, uploadFolder)
    , actions(database) {
    try {
        seedIfEmpty(database);
    } catch (const DatabaseError& error) {
        throw DatabaseError("cannot use the database " + file + ": " + error.what());
    }
}

} // namespace KeloService
