// Encrypted packages. The input describes the entries and the target encrypts them, so that inputs are not rejected
// because of their password, authentication code or checksum. First the input has up to three changes to the finished
// archive, then the entries: a byte for encryption and compression, the size of the content in two bytes, the
// content.
#include "UnpackRun.h"
#include "support/Encryptor.h"

namespace {

using namespace NSTQ::Fuzz;
using NSTQ::Tests::EZipEncryption;
using NSTQ::Tests::SZipEntryText;

constexpr std::size_t maxEntries = 4;

struct SChange {
    std::size_t position;
    std::uint8_t mask;
};

struct SPackage {
    std::vector<SZipEntryText> entries;
    TTree tree;            ///< what unpacking must create
    bool isWhole = true;   ///< whether all entries are valid
    bool isLocked = false; ///< whether a wrong password is detected
};

std::vector<SChange> TakeChanges(CFuzzInput& input) {
    std::vector<SChange> changes(input.Byte() % 4);
    for (SChange& change : changes)
        change = {input.Number(), input.Byte()};
    return changes;
}

void AddEntry(CFuzzInput& input, SPackage& package) {
    const std::uint8_t kind = input.Byte();
    const auto encryption = static_cast<EZipEncryption>((kind & 7) % 5);
    const bool isSecondVersion = (kind & 8) != 0;
    const unsigned packing = kind >> 4 & 3;
    const std::size_t claimed = packing == 2 ? input.Number() : 0;
    const std::string content(input.Text(input.Number()));
    SZipEntryText entry{.name = std::string(1, static_cast<char>('a' + package.entries.size())), .content = content};
    if (packing == 1)
        entry.packed = NSTQ::Tests::DeflateStored(content);
    if (packing == 2)
        entry.size = static_cast<std::uint32_t>(claimed);
    entry.method = packing == 1 || packing == 2 ? 8 : 0;
    package.isWhole &= packing != 2;
    package.isLocked |= encryption != EZipEncryption::None;
    package.tree.emplace(entry.name, content);
    package.entries.push_back(NSTQ::Tests::Encrypted(std::move(entry), encryption, isSecondVersion, "secret"));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CFuzzInput input(data, size);
    const std::vector<SChange> changes = TakeChanges(input);
    SPackage package;
    while (!input.Rest().empty() && package.entries.size() < maxEntries)
        AddEntry(input, package);
    std::string archive = NSTQ::Tests::MakeZip(package.entries);
    for (const SChange& change : changes)
        archive[change.position % archive.size()] ^= static_cast<char>(change.mask);

    TTree right, wrong;
    const bool isUnpacked = Unpack(archive, "secret", right);
    const bool isUnpackedWrongly = Unpack(archive, "wrong", wrong);
    if (!changes.empty())
        return 0;
    Require(isUnpacked || !package.isWhole, "a package that is whole is unpacked");
    Require(!isUnpacked || !package.isWhole || right == package.tree, "what was packed comes out");
    Require(!isUnpackedWrongly || !package.isLocked, "a wrong password gives nothing");
    return 0;
}
