#pragma once

#include <KeloAPI/archive/internal/PropertyList.hpp>

#include <cstdint>

namespace KeloAPI {

constexpr std::uint8_t maxLevelsToAskFor = 250;

/// Whether no container of a list holds itself and none has more than so many levels of values
/// below it.
bool nestsWithin(const PropertyList& list, std::uint8_t levels);

} // namespace KeloAPI
