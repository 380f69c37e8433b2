#pragma once

#include <KeloAPI/http/internal/Secrets.hpp>

#include <functional>
#include <string>
#include <string_view>

namespace KeloAPI::fakes {

/// True for a text that begins as a JSON object or list does.
bool looksLikeJson(std::string_view text);

/// Blanks secrets that are known by their values.
using KnownBlanking = std::function<std::string(std::string text)>;

/// A JSON text in which "BLANKED" stands for each text and 0 for each number under a secret name,
/// or in a list or object under one. In other texts, what `withoutSecrets` and `known` find is
/// blanked, and JSON within a text is treated as JSON; a number in which `known` finds something
/// becomes 0. All else stays as it is, also where the text breaks off or is not quite JSON.
std::string blankedJson(std::string_view json, const SecretNames& names,
                        const SecretListener& listener, const KnownBlanking& known);

} // namespace KeloAPI::fakes
