#include "providers/encryption/SystemCrypto.h"

#include "providers/common/CSourceError.h"

namespace NSTQ::Providers {

void RequireCrypto(bool isDone, const char* what) {
    if (!isDone)
        throw CSourceError(std::string("the system's library of cryptography does not support ") + what);
}

} // namespace NSTQ::Providers
