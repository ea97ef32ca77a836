// Replaces this folder in a build without encryption.
#include "platform/ado/Provider.h"
#include "providers/common/CSourceError.h"
#include "providers/encryption/Encryption.h"

namespace NSTQ::Providers {

namespace {

[[noreturn]] void Fail() {
    throw CSourceError("encrypted, and this build does not open encrypted files");
}

} // namespace

std::shared_ptr<IRandomAccess> OpenEncryptedPackage(CCompoundFile&, const std::string&) {
    Fail();
}

std::unique_ptr<IRecordCipher> MakeRecordCipher(std::span<const unsigned char>, bool, const std::string&) {
    Fail();
}

FDecryptBlock MakePageDecoder(std::uint32_t, std::span<const unsigned char>, const std::string&) {
    Fail();
}

FDecryptBlock MakeJetPageDecoder(std::uint32_t) {
    Fail();
}

bool CanDecryptEntry(unsigned) {
    return false;
}

std::unique_ptr<IByteStream> DecryptEntry(const SEncryptedEntry&, const std::string&) {
    Fail();
}

} // namespace NSTQ::Providers

namespace NSTQ::Platform {

void ForgetPassWords() noexcept {}

} // namespace NSTQ::Platform
