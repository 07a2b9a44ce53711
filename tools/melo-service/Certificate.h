// A self-signed certificate for 127.0.0.1, made fresh at every start.
#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>
#include <string>

struct SelfSignedCertificate {
    std::unique_ptr<X509, decltype(&X509_free)> cert{nullptr, &X509_free};
    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key{nullptr, &EVP_PKEY_free};
};

// Generates an EC P-256 key and a certificate for CN 127.0.0.1 (with the
// alternative names IP 127.0.0.1 and localhost). False with a message on error.
bool makeSelfSignedCertificate(SelfSignedCertificate* out, std::string* error);
