#pragma once

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPIObjC/bridge/Completion.hpp>

#include <functional>
#include <memory>
#include <optional>

/// What an endpoint's calls tell, as the library's functions that pass it on.
namespace KeloBridge {

using NativeEndpoint = KeloAPI::Endpoint;

/// The method of this name; any other text raises `NSInvalidArgumentException`.
KeloAPI::Method methodOf(NSString *name);

/// Tells the error.
std::function<void(std::optional<KeloAPI::Error> failure)> errorCompletion(const Completion &heard);
/// Tells the text, and the error.
NativeEndpoint::TextCompletion textCompletion(const Completion &heard);
/// Tells the file's address, and the error.
NativeEndpoint::DownloadCompletion downloadCompletion(const Completion &heard);
/// Tells the three counts of bytes; empty where nothing would hear of it.
KeloAPI::Session::DownloadProgress downloadProgress(const Completion &heard);

/// Sends and tells the items, the metadata, the timeline and the error.
std::shared_ptr<KeloAPI::EndpointRequest> sendParsed(NativeEndpoint &endpoint, id parser,
                                                     const Completion &heard);
std::shared_ptr<KeloAPI::EndpointRequest> uploadParsed(NativeEndpoint &endpoint, id parser,
                                                       NSData *data, const Completion &heard);

} // namespace KeloBridge
