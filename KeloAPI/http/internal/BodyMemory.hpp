#pragma once

#include <cstddef>

/// The bytes in the bodies of responses in this process, all together. What a body has reserved
/// beyond its size is not counted: the memory that one takes as it grows may be twice as much, and
/// three times while it moves to a larger place. From any thread.
namespace KeloAPI::BodyMemory {

/// Counts so many bytes more; false, and nothing is counted, where that would be more than `max`.
bool take(std::size_t bytes, std::size_t max);
/// So many bytes have gone.
void giveBack(std::size_t bytes);

} // namespace KeloAPI::BodyMemory
