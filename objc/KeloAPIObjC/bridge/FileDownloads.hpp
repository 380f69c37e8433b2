#pragma once

#include <KeloAPI/files/FileEndpoint.hpp>
#include <KeloAPIObjC/bridge/Completion.hpp>

namespace KeloBridge {

/// Tells a `FileDownloadResult`.
KeloAPI::FileEndpoint::Completion fileCompletion(const Completion &heard);

} // namespace KeloBridge
