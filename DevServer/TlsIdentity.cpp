#include "TlsIdentity.h"

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>
#include <utility>

namespace LumoraSDK::DevServer {

namespace {

constexpr const char* kOrganization = "LumoraSDK development";

std::string openSslError(const std::string& what) {
    char text[256] = {};
    ERR_error_string_n(ERR_get_error(), text, sizeof text);
    return what + ": " + text;
}

bool addExtension(X509* certificate, X509V3_CTX* context, int nid, const char* value) {
    X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, context, nid, value);
    if (!extension) {
        return false;
    }
    const bool added = X509_add_ext(certificate, extension, -1) == 1;
    X509_EXTENSION_free(extension);
    return added;
}

bool setRandomSerial(X509* certificate) {
    unsigned char bytes[16];
    if (RAND_bytes(bytes, sizeof bytes) != 1) {
        return false;
    }
    bytes[0] &= 0x7f;  // serial numbers are positive
    BIGNUM* number = BN_bin2bn(bytes, sizeof bytes, nullptr);
    const bool set =
        number && BN_to_ASN1_INTEGER(number, X509_get_serialNumber(certificate)) != nullptr;
    BN_free(number);
    return set;
}

/// A certificate for `key` named `commonName`, signed by `issuerKey`; self-signed when `issuer`
/// is null. `extensions` are (nid, value) pairs in the order they must be added.
X509* makeCertificate(EVP_PKEY* key, const char* commonName, X509* issuer, EVP_PKEY* issuerKey,
                      std::initializer_list<std::pair<int, const char*>> extensions) {
    X509* certificate = X509_new();
    if (!certificate) {
        return nullptr;
    }
    X509_NAME* name = X509_get_subject_name(certificate);
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    bool ok = X509_set_version(certificate, 2) == 1 && setRandomSerial(certificate) &&
              X509_gmtime_adj(X509_getm_notBefore(certificate), -3600) &&
              X509_gmtime_adj(X509_getm_notAfter(certificate),
                              long(TlsIdentity::kValidityDays) * 24 * 3600) &&
              X509_set_pubkey(certificate, key) == 1 &&
              X509_NAME_add_entry_by_txt(name, "O", MBSTRING_ASC,
                                         reinterpret_cast<const unsigned char*>(kOrganization), -1,
                                         -1, 0) == 1 &&
              X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                                         reinterpret_cast<const unsigned char*>(commonName), -1, -1,
                                         0) == 1 &&
              X509_set_issuer_name(certificate, issuer ? X509_get_subject_name(issuer) : name) == 1;
    X509V3_set_ctx(&context, issuer ? issuer : certificate, certificate, nullptr, nullptr, 0);
    for (const auto& [nid, value] : extensions) {
        ok = ok && addExtension(certificate, &context, nid, value);
    }
    ok = ok && X509_sign(certificate, issuerKey, EVP_sha256()) > 0;
    if (!ok) {
        X509_free(certificate);
        return nullptr;
    }
    return certificate;
}

}  // namespace

TlsIdentity::TlsIdentity(Key caKey, Certificate ca, Key serverKey, Certificate server)
    : m_caKey(std::move(caKey))
    , m_caCertificate(std::move(ca))
    , m_serverKey(std::move(serverKey))
    , m_serverCertificate(std::move(server)) {}

std::optional<TlsIdentity> TlsIdentity::generate(std::string& error) {
    // P-256 keys are made in microseconds, unlike RSA, and every TLS client accepts them.
    Key caKey(EVP_EC_gen("P-256"), EVP_PKEY_free);
    Key serverKey(EVP_EC_gen("P-256"), EVP_PKEY_free);
    if (!caKey || !serverKey) {
        error = openSslError("cannot generate keys");
        return std::nullopt;
    }
    Certificate ca(makeCertificate(caKey.get(), "lumora-devserver CA", nullptr, caKey.get(),
                                   {{NID_basic_constraints, "critical,CA:TRUE"},
                                    {NID_key_usage, "critical,keyCertSign,cRLSign"},
                                    {NID_subject_key_identifier, "hash"}}),
                   X509_free);
    if (!ca) {
        error = openSslError("cannot make the CA certificate");
        return std::nullopt;
    }
    Certificate server(
        makeCertificate(serverKey.get(), "localhost", ca.get(), caKey.get(),
                        {{NID_basic_constraints, "critical,CA:FALSE"},
                         {NID_key_usage, "critical,digitalSignature,keyEncipherment"},
                         {NID_ext_key_usage, "serverAuth"},
                         {NID_subject_alt_name, "IP:127.0.0.1,IP:::1,DNS:localhost"},
                         {NID_subject_key_identifier, "hash"},
                         {NID_authority_key_identifier, "keyid:always"}}),
        X509_free);
    if (!server) {
        error = openSslError("cannot make the server certificate");
        return std::nullopt;
    }
    return TlsIdentity(std::move(caKey), std::move(ca), std::move(serverKey), std::move(server));
}

std::string TlsIdentity::caCertificatePem() const {
    std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new(BIO_s_mem()), BIO_free);
    if (!bio || PEM_write_bio_X509(bio.get(), m_caCertificate.get()) != 1) {
        return {};
    }
    char* data = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &data);
    return std::string(data, size_t(size));
}

}  // namespace LumoraSDK::DevServer
