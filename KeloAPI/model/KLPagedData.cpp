#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/model/KLPagedData.hpp>

#include <algorithm>
#include <limits>

namespace KeloAPI {

KLPagedData::KLPagedData(Elements data)
    : _metadata(KLPagingMetadata::ofRecords(static_cast<std::int64_t>(data.size())))
    , _data(std::move(data)) {}

KLPagedData::KLPagedData(Elements data, std::shared_ptr<KLPagingMetadata> metadata)
    : _metadata(std::move(metadata))
    , _data(std::move(data)) {
    require(_metadata != nullptr, "paged data needs metadata");
}

void KLPagedData::setMetadata(std::shared_ptr<KLPagingMetadata> metadata) {
    require(metadata != nullptr, "paged data needs metadata");
    _metadata = std::move(metadata);
}

void KLPagedData::insert(Element object, Index index) {
    require(index >= 0 && index <= count(), "index of an insertion outside the paged data");
    _data.insert(_data.begin() + index, std::move(object));
    require(_metadata->count() < std::numeric_limits<std::int64_t>::max(),
            "count of paged data overflows");
    _metadata->setCount(_metadata->count() + 1);
}

KLPagedData::Element KLPagedData::removeAtIndex(Index index) {
    require(_metadata->count() > std::numeric_limits<std::int64_t>::min(),
            "count of paged data overflows");
    _metadata->setCount(_metadata->count() - 1);
    const auto position = _data.begin() + static_cast<std::ptrdiff_t>(checked(index));
    Element removed = std::move(*position);
    _data.erase(position);
    return removed;
}

bool KLPagedData::remove(const Element& object) {
    const auto found = std::find(_data.begin(), _data.end(), object);
    if (found == _data.end()) {
        return false;
    }
    removeAtIndex(found - _data.begin());
    return true;
}

void KLPagedData::appendPagedData(const KLPagedData& other) {
    insertElements(_data.end(), other);
    _metadata = other._metadata;
}

void KLPagedData::prependPagedData(const KLPagedData& other) {
    insertElements(_data.begin(), other);
    _metadata = std::make_shared<KLPagingMetadata>(count(), *_metadata, *other._metadata);
}

std::shared_ptr<KLPagedData> KLPagedData::copy() const {
    return std::make_shared<KLPagedData>(_data, std::make_shared<KLPagingMetadata>(*_metadata));
}

void KLPagedData::insertElements(Elements::const_iterator position, const KLPagedData& other) {
    if (&other == this) {
        const Elements own = _data;
        _data.insert(position, own.begin(), own.end());
    } else {
        _data.insert(position, other._data.begin(), other._data.end());
    }
}

std::size_t KLPagedData::checked(Index index) const {
    require(index >= 0 && index < count(), "index outside the paged data");
    return static_cast<std::size_t>(index);
}

} // namespace KeloAPI
