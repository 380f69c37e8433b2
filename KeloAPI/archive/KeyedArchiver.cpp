#include <KeloAPI/archive/internal/BinaryPropertyList.hpp>
#include <KeloAPI/archive/internal/KeyedArchiveLayout.hpp>
#include <KeloAPI/archive/KeyedArchiver.hpp>
#include <KeloAPI/base/Contract.hpp>

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace KeloAPI {

namespace Layout = KeyedArchiveLayout;

/// The archive in the making: a property list whose values are added as they come, and the list of
/// objects, which holds references to them.
class KeyedArchiver::Contents {
public:
    using Reference = PropertyList::Reference;
    using Entries = std::vector<std::pair<Reference, Reference>>;

    Contents() { _objects.push_back(text(Layout::null)); }

    void put(std::string_view key, Reference value) {
        const Reference name = text(Layout::escapedKey(key));
        const auto isName = [name](const auto& entry) { return entry.first == name; };
        require(std::none_of(_entries.begin(), _entries.end(), isName),
                "a key is encoded twice in one object");
        _entries.emplace_back(name, value);
    }

    template <class T>
    Reference value(T value) {
        return _list.add(std::move(value));
    }

    /// The one value of this text, which many keys and names share.
    Reference text(std::string_view characters) {
        const auto found = _texts.find(characters);
        if (found != _texts.end()) {
            return found->second;
        }
        const Reference added = value(std::string(characters));
        _texts.emplace(characters, added);
        return added;
    }

    Reference null() { return uid(0); }

    /// A reference to a new object.
    Reference object(Reference value) {
        _objects.push_back(value);
        return uid(_objects.size() - 1);
    }

    /// A reference to a new object of one of the platform's classes.
    Reference object(std::string_view className, Entries entries) {
        entries.emplace_back(text(Layout::objectClass), classNamed({className}));
        return object(value(PropertyList::Dictionary{std::move(entries)}));
    }

    /// A reference to a new list of objects.
    Reference list(const std::vector<std::shared_ptr<const Archivable>>& objects) {
        // The root comes first in the archive, as the platform has it.
        const std::size_t place = _objects.size();
        _objects.push_back(0);
        PropertyList::Array elements;
        for (const auto& element : objects) {
            require(element != nullptr, "a list to be archived holds a null pointer");
            elements.elements.push_back(object(element));
        }
        Entries entries{{text(Layout::arrayObjects), value(std::move(elements))},
                        {text(Layout::objectClass), classNamed({Layout::arrayClass})}};
        _objects[place] = value(PropertyList::Dictionary{std::move(entries)});
        return uid(place);
    }

    /// A reference to an object that `encodeAll` encodes, if it has not.
    Reference object(const std::shared_ptr<const Archivable>& object) {
        if (object == nullptr) {
            return null();
        }
        const auto [place, isNew] = _places.try_emplace(object.get(), _objects.size());
        if (isNew) {
            _objects.push_back(0);
            _pending.push_back(object);
        }
        return uid(place->second);
    }

    /// Encodes the objects one after another, not one within another: however long a chain they
    /// are, the stack stays as it is. The objects are kept until the end, so that no two have one
    /// address.
    void encodeAll(KeyedArchiver& coder) {
        for (std::size_t at = 0; at < _pending.size(); ++at) {
            const std::shared_ptr<const Archivable> object = _pending[at];
            object->encodeWithCoder(coder);
            _entries.emplace_back(text(Layout::objectClass),
                                  classNamed(object->archivedClassNames()));
            _objects[_places[object.get()]] =
                value(PropertyList::Dictionary{std::exchange(_entries, {})});
        }
    }

    Data finish(Reference root) {
        Entries top{{text(Layout::root), root}};
        Entries archive{
            {text(Layout::version), value(Number::of(Layout::versionNumber))},
            {text(Layout::archiver), text(Layout::archiverName)},
            {text(Layout::top), value(PropertyList::Dictionary{std::move(top)})},
            {text(Layout::objects), value(PropertyList::Array{std::move(_objects)})},
        };
        _list.root = value(PropertyList::Dictionary{std::move(archive)});
        return Data(BinaryPropertyList::write(_list));
    }

private:
    Reference uid(std::size_t place) {
        const auto [found, isNew] = _uids.try_emplace(place, 0);
        if (isNew) {
            found->second = value(PropertyList::UID{place});
        }
        return found->second;
    }

    /// A reference to the entry of a class, which is made once.
    Reference classNamed(const std::vector<std::string_view>& names) {
        require(!names.empty(), "an archivable object without a class name");
        PropertyList::Array chain;
        for (const std::string_view name : names) {
            chain.elements.push_back(text(name));
        }
        chain.elements.push_back(text(Layout::rootClass));
        const auto [found, isNew] = _classes.try_emplace(chain.elements, 0);
        if (isNew) {
            const Reference name = chain.elements.front();
            Entries entries{{text(Layout::className), name},
                            {text(Layout::classChain), value(std::move(chain))}};
            found->second = object(value(PropertyList::Dictionary{std::move(entries)}));
        }
        return found->second;
    }

    PropertyList _list;
    std::vector<Reference> _objects;
    /// The entries of the object that is being encoded.
    Entries _entries;
    std::vector<std::shared_ptr<const Archivable>> _pending;
    std::map<const Archivable*, std::size_t> _places;
    std::map<std::string, Reference, std::less<>> _texts;
    std::map<std::size_t, Reference> _uids;
    std::map<std::vector<Reference>, Reference> _classes;
};

KeyedArchiver::KeyedArchiver()
    : _contents(std::make_unique<Contents>()) {}

KeyedArchiver::~KeyedArchiver() = default;

Data KeyedArchiver::archivedData(const std::shared_ptr<const Archivable>& object) {
    KeyedArchiver coder;
    const auto root = coder._contents->object(object);
    coder._contents->encodeAll(coder);
    return coder._contents->finish(root);
}

Data KeyedArchiver::archivedList(const std::vector<std::shared_ptr<const Archivable>>& objects) {
    KeyedArchiver coder;
    const auto root = coder._contents->list(objects);
    coder._contents->encodeAll(coder);
    return coder._contents->finish(root);
}

void KeyedArchiver::encodeObject(const std::shared_ptr<const Archivable>& object,
                                 std::string_view key) {
    _contents->put(key, _contents->object(object));
}

void KeyedArchiver::encodeInt64(std::int64_t value, std::string_view key) {
    _contents->put(key, _contents->value(Number::of(value)));
}

void KeyedArchiver::encodeDouble(double value, std::string_view key) {
    _contents->put(key, _contents->value(Number::of(value)));
}

void KeyedArchiver::encodeBool(bool value, std::string_view key) {
    _contents->put(key, _contents->value(Number::of(value)));
}

void KeyedArchiver::encodeDate(const std::optional<Date>& date, std::string_view key) {
    if (!date) {
        _contents->put(key, _contents->null());
        return;
    }
    // Wide enough for every instant, so that only the last step rounds.
    using Wide = std::chrono::duration<long double, Date::period>;
    const Wide elapsed =
        Wide(date->time_since_epoch()) - Wide(Layout::referenceDate.time_since_epoch());
    const auto seconds = static_cast<double>(std::chrono::duration<long double>(elapsed).count());
    const auto time = _contents->value(Number::of(seconds));
    _contents->put(
        key, _contents->object(Layout::dateClass, {{_contents->text(Layout::dateTime), time}}));
}

void KeyedArchiver::encodeURL(const std::optional<URL>& url, std::string_view key) {
    if (!url) {
        _contents->put(key, _contents->null());
        return;
    }
    const auto text = _contents->object(_contents->text(url->absoluteString()));
    _contents->put(key, _contents->object(Layout::urlClass,
                                          {{_contents->text(Layout::urlBase), _contents->null()},
                                           {_contents->text(Layout::urlRelative), text}}));
}

void KeyedArchiver::encodeText(const std::optional<std::string_view>& text, std::string_view key) {
    _contents->put(key, text ? _contents->object(_contents->text(*text)) : _contents->null());
}

void KeyedArchiver::encodeNumber(const std::optional<Number>& number, std::string_view key) {
    _contents->put(key, number ? _contents->object(_contents->value(*number)) : _contents->null());
}

void KeyedArchiver::encodeRange(const std::optional<Range>& range, std::string_view key) {
    if (!range) {
        _contents->put(key, _contents->null());
        return;
    }
    // The platform keeps the two as number objects; beside them the kind is a plain integer.
    const auto location = _contents->object(_contents->value(Number::of(range->location)));
    const auto length = _contents->object(_contents->value(Number::of(range->length)));
    const auto special = _contents->value(Number::of(Layout::specialRange));
    _contents->put(key, _contents->object(Layout::valueClass,
                                          {{_contents->text(Layout::rangeLength), length},
                                           {_contents->text(Layout::rangeLocation), location},
                                           {_contents->text(Layout::valueSpecial), special}}));
}

} // namespace KeloAPI
