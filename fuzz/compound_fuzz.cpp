// Compound files. The input is a compound file. Each stream is rejected, or has as many bytes as its size states, and
// never more than the file.
#include "FuzzSupport.h"
#include "providers/compound/CCompoundFile.h"
#include "support/RowsText.h"

#include <vector>

namespace {

using namespace NSTQ;
using namespace NSTQ::Providers;

void ReadStream(CCompoundFile& file, std::u16string_view path, std::size_t fileSize) {
    try {
        if (!file.HasStream(path))
            return;
        const auto stream = file.OpenStream(path);
        Fuzz::Require(stream->Size() <= fileSize, "a stream is no larger than its file");
        std::vector<unsigned char> whole(static_cast<std::size_t>(stream->Size()));
        stream->ReadAt(0, whole);
        std::vector<unsigned char> half(whole.size() / 2);
        stream->ReadAt(whole.size() - half.size(), half);
        Fuzz::Require(std::equal(half.rbegin(), half.rend(), whole.rbegin()), "the same bytes come twice");
    } catch (const CSourceError&) {
        // The stream is rejected.
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        CCompoundFile file(
            std::make_shared<Tests::CMemoryAccess>(std::string(reinterpret_cast<const char*>(data), size)));
        for (const std::u16string_view path :
             {u"Workbook", u"Book", u"EncryptionInfo", u"EncryptedPackage", u"a/b", u"a/b/c"})
            ReadStream(file, path, size);
    } catch (const CSourceError&) {
        // Not a compound file, or its directory is damaged.
    }
    return 0;
}
