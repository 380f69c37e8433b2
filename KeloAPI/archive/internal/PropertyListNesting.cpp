#include <KeloAPI/archive/internal/PropertyListNesting.hpp>
#include <KeloAPI/base/Contract.hpp>

#include <algorithm>
#include <vector>

namespace KeloAPI {

namespace {

using Reference = PropertyList::Reference;

/// Walks from container to container without a call inside a call, each container once.
class NestingCheck {
public:
    NestingCheck(const PropertyList& list, std::uint8_t levels)
        : _list(list)
        , _levels(levels)
        , _heights(list.values.size(), unseen) {}

    /// Whether no container holds itself and none has too many levels in it.
    bool passes() {
        for (Reference at = 0; at < _heights.size(); ++at) {
            if (_heights[at] == unseen && !walk(at)) {
                return false;
            }
        }
        return true;
    }

private:
    static constexpr std::uint8_t unseen = 0xFF;
    static constexpr std::uint8_t open = 0xFE;

    struct Step {
        Reference at;
        std::size_t next;
        std::uint8_t height;
    };

    std::size_t elements(Reference at) const {
        if (const auto* array = _list.get<PropertyList::Array>(at)) {
            return array->elements.size();
        }
        if (const auto* set = _list.get<PropertyList::Set>(at)) {
            return set->elements.size();
        }
        const auto* dictionary = _list.get<PropertyList::Dictionary>(at);
        return dictionary == nullptr ? 0 : dictionary->entries.size();
    }

    Reference element(Reference at, std::size_t index) const {
        if (const auto* array = _list.get<PropertyList::Array>(at)) {
            return array->elements[index];
        }
        if (const auto* set = _list.get<PropertyList::Set>(at)) {
            return set->elements[index];
        }
        return _list.get<PropertyList::Dictionary>(at)->entries[index].second;
    }

    bool walk(Reference from) {
        _path.assign(1, Step{from, 0, 0});
        _heights[from] = open;
        while (!_path.empty()) {
            Step& step = _path.back();
            if (step.next == elements(step.at)) {
                if (!close(step)) {
                    return false;
                }
                continue;
            }
            const Reference child = element(step.at, step.next);
            if (_heights[child] == open) {
                return false;
            }
            if (_heights[child] == unseen) {
                if (_path.size() > _levels) {
                    return false;
                }
                _heights[child] = open;
                _path.push_back(Step{child, 0, 0});
                continue;
            }
            step.height = std::max(step.height, static_cast<std::uint8_t>(_heights[child] + 1));
            ++step.next;
        }
        return true;
    }

    bool close(const Step& step) {
        if (step.height > _levels) {
            return false;
        }
        _heights[step.at] = step.height;
        _path.pop_back();
        return true;
    }

    const PropertyList& _list;
    std::uint8_t _levels;
    /// How many levels there are below each value.
    std::vector<std::uint8_t> _heights;
    std::vector<Step> _path;
};

} // namespace

bool nestsWithin(const PropertyList& list, std::uint8_t levels) {
    require(levels <= maxLevelsToAskFor, "more levels than a check of nesting can count");
    return NestingCheck(list, levels).passes();
}

} // namespace KeloAPI
