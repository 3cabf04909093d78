#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>
#include <memory>
#include <optional>
#include <string>

namespace LumoraSDK::DevServer {

/// A throw-away certificate authority and a server certificate for 127.0.0.1, ::1 and localhost
/// that it signed, made in memory at start. Clients trust the server by trusting the CA.
class TlsIdentity {
public:
    /// Certificates are valid from an hour ago (clock skew) for this many days.
    static constexpr int kValidityDays = 30;

    static std::optional<TlsIdentity> generate(std::string& error);

    X509* serverCertificate() const { return m_serverCertificate.get(); }
    EVP_PKEY* serverKey() const { return m_serverKey.get(); }
    std::string caCertificatePem() const;

private:
    using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
    using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;

    TlsIdentity(Key caKey, Certificate ca, Key serverKey, Certificate server);

    Key m_caKey;
    Certificate m_caCertificate;
    Key m_serverKey;
    Certificate m_serverCertificate;
};

}  // namespace LumoraSDK::DevServer
