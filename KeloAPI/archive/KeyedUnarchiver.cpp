#include <KeloAPI/archive/internal/BinaryPropertyList.hpp>
#include <KeloAPI/archive/internal/KeyedArchive.hpp>
#include <KeloAPI/archive/internal/KeyedArchiveLayout.hpp>
#include <KeloAPI/archive/KeyedUnarchiver.hpp>
#include <KeloAPI/base/internal/UTF16.hpp>

#include <cmath>
#include <limits>
#include <map>
#include <utility>

namespace KeloAPI {

namespace Layout = KeyedArchiveLayout;

namespace {

/// How many objects may be decoded one within another. Nothing of the platform's or of ours comes
/// near; each level takes a part of the stack.
constexpr std::size_t maxLevels = 100;

/// How many bytes of text may be handed out in all. Objects may share a text, and each is given a
/// copy.
constexpr std::size_t maxTextBytes = BinaryPropertyList::maxBytes;

/// How many bases a URL may have.
constexpr int maxBases = 4;

} // namespace

/// An archive while it is decoded.
class KeyedUnarchiver::Contents {
public:
    using Dictionary = PropertyList::Dictionary;
    using Reference = std::optional<PropertyList::Reference>;
    using Place = KeyedArchive::Place;

    explicit Contents(const Data& bytes) {
        auto archive = KeyedArchive::read(bytes);
        _refused = !archive;
        if (archive) {
            _archive = *std::move(archive);
        }
    }

    bool isRefused() const { return _refused; }
    Place root() const { return _archive.root(); }

    /// The value under a key of the object that is being decoded.
    Reference raw(std::string_view key) const {
        return _refused || _current == nullptr ? std::nullopt
                                               : _archive.value(*_current, Layout::escapedKey(key));
    }

    std::optional<Place> place(std::string_view key) const { return _archive.place(raw(key)); }

    /// The same, or the object that it refers to.
    Reference target(std::string_view key) const { return _archive.target(raw(key)); }

    std::optional<Number> number(Reference value) const {
        const auto* found = _archive.get<Number>(value);
        return found == nullptr ? std::nullopt : std::optional(*found);
    }

    std::shared_ptr<Archivable> object(KeyedUnarchiver& coder, Place place,
                                       std::string_view className, std::type_index type,
                                       Initialiser initialise) {
        const Dictionary* entries = _refused ? nullptr : _archive.entries(place);
        if (entries == nullptr) {
            return nullptr;
        }
        const auto [known, isNew] = _decoded.try_emplace({place, type}, nullptr);
        if (!isNew) {
            return known->second;
        }
        if (!_archive.isKindOf(*entries, className)) {
            return nullptr;
        }
        if (_levels == maxLevels) {
            _refused = true;
            return nullptr;
        }
        ++_levels;
        const Dictionary* outer = std::exchange(_current, entries);
        auto object = initialise(coder);
        _current = outer;
        --_levels;
        // Elements of a map stay where they are, however many came meanwhile.
        known->second = object;
        return object;
    }

    /// The references in a list; null where there is none.
    const PropertyList::Array* list(Place place) const {
        const Dictionary* entries = _refused ? nullptr : _archive.entries(place);
        if (entries == nullptr || !_archive.isKindOf(*entries, Layout::arrayClass)) {
            return nullptr;
        }
        const auto* elements =
            _archive.get<PropertyList::Array>(_archive.value(*entries, Layout::arrayObjects));
        // References are shorter than the pointers that they become.
        return elements != nullptr && elements->elements.size() <= BinaryPropertyList::maxValues
                   ? elements
                   : nullptr;
    }

    std::optional<Place> place(PropertyList::Reference element) const {
        return _archive.place(element);
    }

    std::optional<Date> date(Reference value) const {
        double seconds = 0;
        if (const auto* plain = _archive.get<PropertyList::Date>(value)) {
            seconds = plain->secondsSince2001;
        } else {
            const auto* entries = instance(value, Layout::dateClass);
            const auto time =
                entries == nullptr ? std::nullopt : number(target(*entries, Layout::dateTime));
            if (!time) {
                return std::nullopt;
            }
            seconds = time->doubleValue();
        }
        // Rounded apart, the fraction keeps all the digits that the archive has of it.
        const double whole = std::floor(seconds);
        const double limit = static_cast<double>(std::numeric_limits<Date::rep>::max()) / 1e6 - 1e9;
        if (!(std::abs(whole) < limit)) {
            return std::nullopt;
        }
        return Layout::referenceDate + std::chrono::seconds(static_cast<std::int64_t>(whole)) +
               std::chrono::microseconds(std::llround((seconds - whole) * 1e6));
    }

    std::optional<std::string> text(Reference value) {
        if (const auto* plain = _archive.get<std::string>(value)) {
            return handOut(*plain);
        }
        const auto* entries = instance(value, Layout::textClass);
        if (entries == nullptr) {
            return std::nullopt;
        }
        if (const auto string = target(*entries, Layout::textString)) {
            const auto* plain = _archive.get<std::string>(string);
            return plain == nullptr ? std::nullopt : handOut(*plain);
        }
        const auto* bytes = _archive.get<PropertyList::Data>(target(*entries, Layout::textBytes));
        if (bytes == nullptr || !isUTF8(bytes->bytes)) {
            return std::nullopt;
        }
        return handOut(bytes->bytes);
    }

    std::optional<URL> url(Reference value, int bases) {
        const auto* entries = instance(value, Layout::urlClass);
        const auto relative =
            entries == nullptr ? std::nullopt : text(target(*entries, Layout::urlRelative));
        if (!relative) {
            return std::nullopt;
        }
        const auto base = target(*entries, Layout::urlBase);
        if (!base) {
            return relative->empty() ? URL::empty() : URL::parse(*relative);
        }
        const auto resolvedBase = bases < maxBases ? url(base, bases + 1) : std::nullopt;
        auto resolved = resolvedBase ? resolvedBase->resolve(*relative) : std::nullopt;
        const auto fragment = relative->find('#');
        if (!resolved || fragment == std::string::npos) {
            return resolved;
        }
        // Resolving is for requests, which have no fragment; here it belongs to the value.
        return URL::parse(resolved->absoluteString() + relative->substr(fragment));
    }

    std::optional<Range> range(Reference value) const {
        const auto* entries = instance(value, Layout::valueClass);
        if (entries == nullptr) {
            return std::nullopt;
        }
        const auto special = number(target(*entries, Layout::valueSpecial));
        const auto location = number(target(*entries, Layout::rangeLocation));
        const auto length = number(target(*entries, Layout::rangeLength));
        const auto isCount = [](const std::optional<Number>& number) {
            return number && number->kind() != Number::Kind::Double && number->int64Value() >= 0;
        };
        if (!special || !(*special == Number::of(Layout::specialRange)) || !isCount(location) ||
            !isCount(length)) {
            return std::nullopt;
        }
        constexpr auto highest =
            static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
        const auto start = location->uint64Value();
        const auto size = length->uint64Value();
        if (start > highest || size > highest - start) {
            return std::nullopt;
        }
        return Range{static_cast<std::int64_t>(start), static_cast<std::int64_t>(size)};
    }

private:
    /// An object of one of the platform's classes.
    const Dictionary* instance(Reference value, std::string_view className) const {
        const auto* entries = _archive.get<Dictionary>(value);
        return entries != nullptr && _archive.isKindOf(*entries, className) ? entries : nullptr;
    }

    /// What a key of an object stands for, through a reference or not.
    Reference target(const Dictionary& entries, std::string_view key) const {
        return _archive.target(_archive.value(entries, key));
    }

    std::optional<std::string> handOut(const std::string& text) {
        _textBytes += text.size();
        if (_textBytes > maxTextBytes) {
            _refused = true;
            return std::nullopt;
        }
        return text;
    }

    KeyedArchive _archive;
    bool _refused;
    /// The object that is being decoded.
    const Dictionary* _current = nullptr;
    std::size_t _levels = 0;
    std::size_t _textBytes = 0;
    /// What became of each object, null included: a failure is not tried again. An object is null
    /// while it is being decoded.
    std::map<std::pair<Place, std::type_index>, std::shared_ptr<Archivable>> _decoded;
};

KeyedUnarchiver::KeyedUnarchiver(const Data& archive)
    : _contents(std::make_unique<Contents>(archive)) {}

KeyedUnarchiver::~KeyedUnarchiver() = default;

std::optional<std::string> KeyedUnarchiver::rootClassName(const Data& archive) {
    const auto contents = KeyedArchive::read(archive);
    const auto* entries = contents ? contents->entries(contents->root()) : nullptr;
    const auto name = entries == nullptr ? std::nullopt : contents->className(*entries);
    return name ? std::optional(std::string(*name)) : std::nullopt;
}

std::shared_ptr<Archivable> KeyedUnarchiver::rootObject(std::string_view className,
                                                        std::type_index type,
                                                        Initialiser initialise) {
    return _contents->object(*this, _contents->root(), className, type, initialise);
}

std::optional<std::vector<std::shared_ptr<Archivable>>>
KeyedUnarchiver::rootObjects(std::string_view className, std::type_index type,
                             Initialiser initialise) {
    const auto* list = _contents->list(_contents->root());
    if (list == nullptr) {
        return std::nullopt;
    }
    std::vector<std::shared_ptr<Archivable>> objects;
    objects.reserve(list->elements.size());
    for (const PropertyList::Reference element : list->elements) {
        const auto place = _contents->place(element);
        auto object =
            place ? _contents->object(*this, *place, className, type, initialise) : nullptr;
        if (object == nullptr) {
            return std::nullopt;
        }
        objects.push_back(std::move(object));
    }
    return objects;
}

std::shared_ptr<Archivable> KeyedUnarchiver::object(std::string_view key,
                                                    std::string_view className,
                                                    std::type_index type, Initialiser initialise) {
    const auto place = _contents->place(key);
    return place ? _contents->object(*this, *place, className, type, initialise) : nullptr;
}

bool KeyedUnarchiver::isRefused() const {
    return _contents->isRefused();
}

bool KeyedUnarchiver::containsValue(std::string_view key) const {
    return _contents->raw(key).has_value();
}

std::int64_t KeyedUnarchiver::decodeInt64(std::string_view key) const {
    const auto number = decodeNumber(key);
    return number ? number->int64Value() : 0;
}

double KeyedUnarchiver::decodeDouble(std::string_view key) const {
    const auto number = decodeNumber(key);
    return number ? number->doubleValue() : 0.0;
}

bool KeyedUnarchiver::decodeBool(std::string_view key) const {
    const auto number = decodeNumber(key);
    return number && number->boolValue();
}

std::optional<Date> KeyedUnarchiver::decodeDate(std::string_view key) const {
    return _contents->date(_contents->target(key));
}

std::optional<URL> KeyedUnarchiver::decodeURL(std::string_view key) const {
    return _contents->url(_contents->target(key), 0);
}

std::optional<std::string> KeyedUnarchiver::decodeText(std::string_view key) const {
    return _contents->text(_contents->target(key));
}

std::optional<Number> KeyedUnarchiver::decodeNumber(std::string_view key) const {
    return _contents->number(_contents->target(key));
}

std::optional<Range> KeyedUnarchiver::decodeRange(std::string_view key) const {
    return _contents->range(_contents->target(key));
}

} // namespace KeloAPI
