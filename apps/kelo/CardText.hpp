#pragma once

#include <string>

namespace KeloAPI {
class KLFeedInsert;
} // namespace KeloAPI

namespace KeloHost {

/// A card of a feed on one printable line: its reference, what it is and what it says.
std::string cardText(const KeloAPI::KLFeedInsert& insert);

} // namespace KeloHost
