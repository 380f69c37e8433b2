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

/// What is read can be written, and is then read as the same.
void readAsPropertyList(const Data& bytes) {
    const auto list = BinaryPropertyList::read(bytes.bytes());
    if (!list) {
        return;
    }
    const std::string once = BinaryPropertyList::write(*list);
    const auto again = BinaryPropertyList::read(std::as_bytes(std::span(once)));
    expect(again.has_value() && again->values.size() == list->values.size());
    expect(BinaryPropertyList::write(*again) == once);
}

/// What can be read of an object can be archived, and read again as the same.
template <class... Classes>
void readAsObjects(const Data& bytes) {
    const auto readAs = [&bytes](auto read) {
        const auto object = read(bytes);
        if (object == nullptr) {
            return;
        }
        const Data archive = KeyedArchiver::archivedData(object);
        const auto again = read(archive);
        expect(again != nullptr && KeyedArchiver::archivedData(again).text() == archive.text());
    };
    (readAs(KeyedUnarchiver::unarchive<Classes>), ...);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Data bytes(std::string(reinterpret_cast<const char*>(data), size));
    readAsPropertyList(bytes);
    readAsObjects<testing::Everything, testing::Node, KLChannel, KLEntity, KLTag, KLVenue,
                  KLVenueCategory, LoopData, PostThumbnail, SoundboardSound>(bytes);
    return 0;
}
