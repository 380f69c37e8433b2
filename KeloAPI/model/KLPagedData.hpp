#pragma once

#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/model/KLPagingMetadata.hpp>

#include <concepts>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace KeloAPI {

/// A list of model objects that grows page by page, with the paging values of what has been loaded
/// so far. Inserting and removing single elements moves `metadata()->count()` along; assigning
/// `data` does not. One thread at a time.
class KELO_API KLPagedData final : public Object {
public:
    using Element = std::shared_ptr<Object>; ///< A model of any class.
    using Elements = std::vector<Element>;   ///< The list itself.
    using Index = std::int64_t;              ///< Counts from 0.

    /// An empty list.
    KLPagedData()
        : KLPagedData(Elements()) {}
    /// A list whose metadata has the number of elements as its count and nothing else.
    explicit KLPagedData(Elements data);
    /// `metadata` must not be null.
    KLPagedData(Elements data, std::shared_ptr<KLPagingMetadata> metadata);

    /// Never null; shared, not copied.
    const std::shared_ptr<KLPagingMetadata>& metadata() const { return _metadata; }
    /// `metadata` must not be null.
    void setMetadata(std::shared_ptr<KLPagingMetadata> metadata);
    const Elements& data() const { return _data; } ///< All elements, in their order.
    /// Replaces the elements; the metadata stays as it is.
    void setData(Elements data) { _data = std::move(data); }

    /// The number of elements.
    Index count() const { return static_cast<Index>(_data.size()); }
    Index startIndex() const { return 0; }                           ///< Always 0.
    Index endIndex() const { return count(); }                       ///< Behind the last element.
    Elements::const_iterator begin() const { return _data.begin(); } ///< The first element.
    Elements::const_iterator end() const { return _data.end(); }     ///< Behind the last element.
    /// To put the elements in another order.
    Elements::iterator begin() { return _data.begin(); }
    Elements::iterator end() { return _data.end(); } ///< Behind the last element.

    /// The elements that are of this class, in order.
    template <std::derived_from<Object> T>
    std::vector<std::shared_ptr<T>> as() const {
        std::vector<std::shared_ptr<T>> typed;
        for (const Element& element : _data) {
            if (auto one = std::dynamic_pointer_cast<T>(element)) {
                typed.push_back(std::move(one));
            }
        }
        return typed;
    }

    /// True when the metadata names a next page above 0. Anchors play no part.
    bool hasNextPage() const { return _metadata->nextPage() > 0; }

    /// An element, to read or to replace. An index outside the list stops the process.
    const Element& operator[](Index index) const { return _data[checked(index)]; }
    Element& operator[](Index index) { return _data[checked(index)]; }         ///< As above.
    const Element& objectAtIndex(Index index) const { return (*this)[index]; } ///< As `operator[]`.

    /// Adds behind the last element.
    void append(Element object) { insert(std::move(object), count()); }
    void addObject(Element object) { append(std::move(object)); } ///< As `append`.
    /// Adds before the element at `index`, or at the end. An index that is neither, and a metadata
    /// count that cannot grow, stop the process.
    void insert(Element object, Index index);
    /// As `insert`.
    void insertObject(Element object, Index index) { insert(std::move(object), index); }
    /// Takes an element out and returns it. An index outside the list, and a metadata count that
    /// cannot sink, stop the process.
    Element removeAtIndex(Index index);
    /// As `removeAtIndex`.
    Element removeObjectAtIndex(Index index) { return removeAtIndex(index); }
    /// Takes the first element out that is this very object; false when there is none.
    bool remove(const Element& object);
    bool removeObject(const Element& object) { return remove(object); } ///< As `remove`.

    /// Adds an older page behind the list; null does nothing.
    void addPagedData(const std::shared_ptr<KLPagedData>& other) {
        if (other) {
            appendPagedData(*other);
        }
    }
    /// Adds an older page behind the list, whose metadata (the same object) becomes this list's.
    void appendPagedData(const KLPagedData& other);
    /// Adds newer records before the list. The metadata is made anew: the list's own, with the new
    /// number of elements as its count and the other page's values for the way back.
    void prependPagedData(const KLPagedData& other);

    /// A list of the same elements, shared, with metadata of its own.
    std::shared_ptr<KLPagedData> copy() const;

private:
    /// The elements of `other` at `position`, the list growing as a vector does.
    void insertElements(Elements::const_iterator position, const KLPagedData& other);
    std::size_t checked(Index index) const;

    std::shared_ptr<KLPagingMetadata> _metadata;
    Elements _data;
};

} // namespace KeloAPI
