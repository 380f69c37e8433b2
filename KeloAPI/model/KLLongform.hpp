#pragma once

#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

/// A long-form video. One thread at a time.
class KELO_API KLLongform final : public Object {
public:
    /// All else has its default.
    KLLongform(std::string identifier, URL videoUrl, double seconds)
        : longformId(std::move(identifier))
        , url(std::move(videoUrl))
        , duration(seconds) {}

    /// "longformId".
    const std::string longformId;
    /// "videoUrl".
    const URL url;
    /// "duration": in seconds.
    const double duration;

    /// "aspectRatio": the width over the height.
    double aspectRatio = 1;
    /// "thumbnailUrl"; absent when missing or not a URL.
    std::optional<URL> thumbnailUrl;
    /// Whether the host may fetch the video before it plays. The host's own: no response sets it.
    bool canPreload = false;
};

/// Needs "longformId" as text, "videoUrl" as a URL and "duration" as a number
/// (`InsufficientData`).
class KELO_API KLLongformParser final : public JsonParser<KLLongform> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<KLLongform> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
