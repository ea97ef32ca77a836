// Encryption. By the first byte of the input the rest is either the description of a workbook's encryption (after its
// size, two bytes) and the encrypted package, or the description of the encryption of BIFF records. What opens with
// the password of the seeds is decrypted completely; everything else is rejected.
#include "FuzzSupport.h"
#include "providers/encryption/Encryption.h"
#include "support/CompoundBuilder.h"
#include "support/RowsText.h"

#include <vector>

namespace {

using namespace NSTQ;
using namespace NSTQ::Providers;

const std::string passWord = "secret";

std::span<const unsigned char> Bytes(std::string_view text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

/// The library limits the rounds of hashing, but inputs near that limit would take all the time of the fuzzer.
bool TakesLong(std::string_view description) {
    constexpr std::string_view name = "spinCount=";
    const std::size_t at = description.find(name);
    const std::size_t value = at == description.npos ? description.size() : at + name.size() + 1;
    return description.find_first_not_of("0123456789", value) - value > 3 && value < description.size();
}

void OpenPackage(Fuzz::CFuzzInput& input) {
    const std::size_t claimed = input.Number();
    const std::string_view rest = input.Rest();
    const std::size_t split = std::min(claimed, rest.size());
    if (TakesLong(rest))
        return;
    Tests::CCompoundBuilder builder;
    builder.Add(u"EncryptionInfo", std::string(rest.substr(0, split)));
    builder.Add(u"EncryptedPackage", std::string(rest.substr(split)));
    CCompoundFile file(std::make_shared<Tests::CMemoryAccess>(builder.Finish().bytes));
    const auto package = OpenEncryptedPackage(file, passWord);
    Fuzz::Require(package->Size() <= rest.size(), "a package is no larger than what it is decrypted from");
    std::vector<unsigned char> bytes(static_cast<std::size_t>(package->Size()));
    package->ReadAt(0, bytes);
}

void OpenRecords(std::string_view filePass, bool isBiff8) {
    const auto cipher = MakeRecordCipher(Bytes(filePass), isBiff8, passWord);
    std::vector<unsigned char> body(3000);
    for (const std::uint64_t position : {0U, 1020U, 500U, 0xFFFFFF00U})
        cipher->Decrypt(body, position, 3000);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::CFuzzInput input(data, size);
    const std::uint8_t kind = input.Byte();
    try {
        if (kind % 3 == 0)
            OpenPackage(input);
        else
            OpenRecords(input.Rest(), kind % 3 == 1);
    } catch (const CSourceError&) {
        // It is rejected.
    }
    return 0;
}
