#pragma once

#include <string>

namespace KeloService {

/// Files (PEM) to serve with.
struct CertificateFiles {
    std::string certificate;
    std::string key;
};

/// The certificate that this machine's user serves with where none is given: made at the first
/// start and when it is about to expire, with a key that only the user can read, and kept with the
/// user's state (`$XDG_STATE_HOME/kelo-service`, by default `~/.local/state/kelo-service`), where
/// `kelo` looks for it. Throws with one line that says why there can be none.
CertificateFiles ownCertificate();

} // namespace KeloService
