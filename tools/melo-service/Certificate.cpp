#include "Certificate.h"

#include <openssl/err.h>
#include <openssl/x509v3.h>

#include <ctime>

namespace {

std::string openSslError(const char* step)
{
    char text[256] = {0};
    ERR_error_string_n(ERR_get_error(), text, sizeof text);
    return std::string(step) + ": " + text;
}

bool addNameEntry(X509_NAME* name, const char* field, const char* value)
{
    return X509_NAME_add_entry_by_txt(name, field, MBSTRING_UTF8, reinterpret_cast<const unsigned char*>(value),
                                      -1, -1, 0)
        == 1;
}

} // namespace

bool makeSelfSignedCertificate(SelfSignedCertificate* out, std::string* error)
{
    out->key.reset(EVP_EC_gen("P-256"));
    if (!out->key) {
        *error = openSslError("key generation");
        return false;
    }
    out->cert.reset(X509_new());
    X509* cert = out->cert.get();
    if (!cert) {
        *error = openSslError("certificate");
        return false;
    }
    X509_NAME* name = X509_get_subject_name(cert);
    const bool filled = X509_set_version(cert, 2) == 1
        && ASN1_INTEGER_set(X509_get_serialNumber(cert), static_cast<long>(std::time(nullptr))) == 1
        && X509_gmtime_adj(X509_getm_notBefore(cert), -3600L)
        && X509_gmtime_adj(X509_getm_notAfter(cert), 3650L * 24 * 3600)
        && X509_set_pubkey(cert, out->key.get()) == 1
        && addNameEntry(name, "O", "MELO stand-in service") && addNameEntry(name, "CN", "127.0.0.1")
        && X509_set_issuer_name(cert, name) == 1;
    if (!filled) {
        *error = openSslError("certificate fields");
        return false;
    }
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, cert, cert, nullptr, nullptr, 0);
    X509_EXTENSION* altNames =
        X509V3_EXT_conf_nid(nullptr, &context, NID_subject_alt_name, "IP:127.0.0.1,DNS:localhost");
    const bool extended = altNames && X509_add_ext(cert, altNames, -1) == 1;
    X509_EXTENSION_free(altNames);
    if (!extended || X509_sign(cert, out->key.get(), EVP_sha256()) == 0) {
        *error = openSslError("certificate signature");
        return false;
    }
    return true;
}
