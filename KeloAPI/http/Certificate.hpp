#pragma once

#include <KeloAPI/base/Data.hpp>
#include <KeloAPI/base/Export.hpp>

#include <optional>
#include <string>

namespace KeloAPI {

/// An X.509 certificate. Copies share its bytes; equality is equality of the bytes.
class KELO_API Certificate {
public:
    /// The certificate that these DER bytes are, all of them; none when they are not one.
    static std::optional<Certificate> fromDER(Data der);
    /// The first certificate in a PEM text; none when there is none.
    static std::optional<Certificate> fromPEM(const std::string& pem);

    const Data& der() const { return _der; } ///< The DER form, all of it.
    /// The PEM form, line ends included.
    std::string pem() const;

    /// The bytes are equal.
    friend bool operator==(const Certificate& a, const Certificate& b) {
        return a._der.text() == b._der.text();
    }

private:
    explicit Certificate(Data der)
        : _der(std::move(der)) {}
    Data _der;
};

} // namespace KeloAPI
