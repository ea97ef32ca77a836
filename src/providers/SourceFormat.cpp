#include "providers/SourceFormat.h"

#include "providers/common/CSourceError.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace NSTQ::Providers {

namespace {

using namespace std::string_view_literals;

/// The first bytes of the file, as many as distinguish the formats.
std::string ReadBegin(IRandomAccess& file) {
    constexpr std::uint64_t wanted = 19;
    std::string bytes(static_cast<std::size_t>(std::min(wanted, file.Size())), '\0');
    file.ReadAt(0, {reinterpret_cast<unsigned char*>(bytes.data()), bytes.size()});
    return bytes;
}

/// Looks for the stream of a workbook first: the directory may be damaged after it.
bool IsEncryptedPackage(const CCompoundFile& file) {
    return !file.HasStream(u"Workbook") && !file.HasStream(u"Book") && file.HasStream(u"EncryptedPackage");
}

bool IsPlainRecordStream(std::string_view begin) {
    // Without a compound file: a BOF record with its length.
    static constexpr std::array records = {"\x09\x00\x04\x00"sv, "\x09\x02\x06\x00"sv, "\x09\x04\x06\x00"sv,
                                           "\x09\x08\x08\x00"sv, "\x09\x08\x10\x00"sv};
    return std::ranges::any_of(records, [&](std::string_view record) { return begin.starts_with(record); });
}

} // namespace

const char* GetFormatName(ESourceFormat format) {
    static constexpr std::array names = {"xlsx", "xls", "Access"};
    static_assert(names.size() == sourceFormatCount);
    return names[static_cast<std::size_t>(format)];
}

ESourceFormat DetectSourceFormat(CSourceInput& input) {
    if (const CCompoundFile* compound = input.GetCompound())
        return IsEncryptedPackage(*compound) ? ESourceFormat::Xlsx : ESourceFormat::Xls;
    const std::string begin = ReadBegin(*input.GetFile());
    if (begin.starts_with("PK\x03\x04"sv) || begin.starts_with("PK\x05\x06"sv))
        return ESourceFormat::Xlsx;
    if (IsPlainRecordStream(begin))
        return ESourceFormat::Xls;
    if (begin == "\0\1\0\0Standard Jet DB"sv || begin == "\0\1\0\0Standard ACE DB"sv)
        return ESourceFormat::Access;
    throw CSourceError("neither a workbook nor a database");
}

} // namespace NSTQ::Providers
