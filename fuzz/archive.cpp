// Any bytes as a keyed archive, through the unarchiver with classes that have entries of every
// kind.
#include "support/ArchivedModels.hpp"

#include <KeloAPI/archive/internal/BinaryPropertyList.hpp>
#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVenueCategory.hpp>
#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPI/model/PostThumbnail.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

using namespace KeloAPI;

void expect(bool holds) {
    if (!holds) {
        std::abort();
    }
}

std::string rewritten(const PropertyList& list) {
    return BinaryPropertyList::write(list);
}

/// What is read can be written, and is then read as the same.
void readAsPropertyList(const Data& bytes) {
    const auto list = BinaryPropertyList::read(bytes.bytes());
    if (!list) {
        return;
    }
    const std::string once = rewritten(*list);
    const auto again = BinaryPropertyList::read(std::as_bytes(std::span(once)));
    expect(again.has_value() && again->values.size() == list->values.size());
    expect(rewritten(*again) == once);
}

/// As long as the archive is read back in one piece, an object is the same after each round.
void readAsEverything(const Data& bytes) {
    const auto object = KeyedUnarchiver::unarchive<testing::Everything>(bytes);
    if (!object) {
        return;
    }
    const auto again =
        KeyedUnarchiver::unarchive<testing::Everything>(KeyedArchiver::archivedData(object));
    expect(again != nullptr);
    expect(again->text == object->text && again->range == object->range);
    expect(again->url == object->url && again->number.has_value() == object->number.has_value());
    expect(again->date.has_value() == object->date.has_value());
    expect(again->integer == object->integer && again->flag == object->flag);
    expect((again->other == nullptr) == (object->other == nullptr));
}

void readAsNodes(const Data& bytes) {
    const auto node = KeyedUnarchiver::unarchive<testing::Node>(bytes);
    if (node) {
        expect(KeyedUnarchiver::unarchive<testing::Node>(KeyedArchiver::archivedData(node)) !=
               nullptr);
    }
}

/// What can be read of a model can be archived and read again.
template <class... Models>
void readAsModels(const Data& bytes) {
    const auto readAs = [&bytes](auto read) {
        const auto model = read(bytes);
        if (model == nullptr) {
            return;
        }
        const Data archive = KeyedArchiver::archivedData(model);
        const auto again = read(archive);
        expect(again != nullptr && KeyedArchiver::archivedData(again).text() == archive.text());
    };
    (readAs(KeyedUnarchiver::unarchive<Models>), ...);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Data bytes(std::string(reinterpret_cast<const char*>(data), size));
    readAsPropertyList(bytes);
    readAsEverything(bytes);
    readAsNodes(bytes);
    readAsModels<KLChannel, KLEntity, KLTag, KLVenue, KLVenueCategory, LoopData, PostThumbnail,
                 SoundboardSound>(bytes);
    return 0;
}
