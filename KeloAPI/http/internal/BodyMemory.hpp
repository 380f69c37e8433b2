#pragma once

#include <cstddef>

/// The bytes in the bodies of answers in this process, all together. What a body has reserved
/// beyond its size is not counted: the memory that one takes as it grows may be twice as much, and
/// three times while it moves to a larger place. From any thread.
namespace KeloAPI::BodyMemory {

// No answer of the service comes near it; a body that does is an accident or an attack.
inline constexpr std::size_t mostOfOne = std::size_t{256} << 20U;
// A few such bodies at a time are an attack, too.
inline constexpr std::size_t mostOfAll = std::size_t{1} << 30U;

/// Counts so many bytes more; false, and nothing is counted, where that would be too many.
bool take(std::size_t bytes);
/// So many bytes have gone.
void giveBack(std::size_t bytes);

} // namespace KeloAPI::BodyMemory
