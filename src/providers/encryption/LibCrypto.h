// The objects of libcrypto as owned pointers, without its headers.
#pragma once

#include <memory>

struct evp_cipher_ctx_st;
struct evp_md_ctx_st;
struct evp_md_st;

namespace NSTQ::Providers {

struct SLibCryptoFree {
    void operator()(evp_cipher_ctx_st* context) const;
    void operator()(evp_md_ctx_st* context) const;
    void operator()(evp_md_st* digest) const;
};

template <class TObject>
using TLibCryptoPtr = std::unique_ptr<TObject, SLibCryptoFree>;

/// Throws CSourceError, naming `what`, when libcrypto refused it.
void CheckLibCrypto(bool isDone, const char* what);

} // namespace NSTQ::Providers
