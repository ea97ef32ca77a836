#include "providers/encryption/LibCrypto.h"

#include "providers/common/CSourceError.h"

#include <openssl/evp.h>

namespace NSTQ::Providers {

void SLibCryptoFree::operator()(evp_cipher_ctx_st* context) const {
    EVP_CIPHER_CTX_free(context);
}

void SLibCryptoFree::operator()(evp_md_ctx_st* context) const {
    EVP_MD_CTX_free(context);
}

void SLibCryptoFree::operator()(evp_md_st* digest) const {
    EVP_MD_free(digest);
}

void CheckLibCrypto(bool isDone, const char* what) {
    if (!isDone)
        throw CSourceError(std::string("libcrypto does not support ") + what);
}

} // namespace NSTQ::Providers
