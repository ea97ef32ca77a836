#include "SCContentProbe.h"

#include "AsciiCase.h"
#include "CFailure.h"
#include "SCTypeNames.h"

#include <algorithm>
#include <cstdint>

namespace NSTQ::Tool {
namespace {

using namespace std::string_view_literals;
using EType = SCDeclareConstant::ESourceFileType;

constexpr std::string_view zipMark = "PK\x03\x04"sv;
constexpr std::string_view compoundMark = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv;

/// What there is of `size` bytes at the offset.
std::string ReadAt(Port::TFile file, std::uint64_t offset, std::size_t size) {
    std::string bytes(size, '\0');
    std::size_t done = 0;
    DWORD got = 1;
    while (done < size && got > 0) {
        Port::ReadAt(file, static_cast<LONGLONG>(offset + done), bytes.data() + done, static_cast<DWORD>(size - done),
                     got);
        done += got;
    }
    bytes.resize(done);
    return bytes;
}

/// The number of `size` bytes at a place that the text has.
std::uint64_t NumberAt(std::string_view bytes, std::size_t at, std::size_t size) {
    std::uint64_t value = 0;
    for (std::size_t i = size; i-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
    return value;
}

struct SExtent {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
};

/// Of the directory at the end of a zip archive; empty when it cannot be found.
SExtent FindZipDirectory(Port::TFile file, std::uint64_t fileSize) {
    constexpr std::size_t endSize = 22;
    constexpr std::size_t locatorSize = 20;
    constexpr std::size_t end64Size = 56;
    constexpr std::uint64_t tailMax = locatorSize + endSize + 65535;
    const std::string tail = ReadAt(file, fileSize - std::min(fileSize, tailMax), tailMax);
    const std::size_t end = tail.rfind("PK\x05\x06"sv);
    if (end == std::string::npos || tail.size() - end < endSize)
        return {};
    if (end >= locatorSize && tail.compare(end - locatorSize, 4, "PK\x06\x07"sv) == 0) {
        const std::string end64 = ReadAt(file, NumberAt(tail, end - locatorSize + 8, 8), end64Size);
        if (end64.size() == end64Size)
            return {NumberAt(end64, 48, 8), NumberAt(end64, 40, 8)};
    }
    return {NumberAt(tail, end + 16, 4), NumberAt(tail, end + 12, 4)};
}

/// A name in a zip archive as it is compared: in small letters, with '/' between folders.
std::string ComparableName(std::string_view name) {
    std::string comparable = ToAsciiLowerText(std::string(name));
    std::ranges::replace(comparable, '\\', '/');
    return comparable;
}

EType FindTypeByName(std::string_view name) {
    constexpr std::string_view workbook = "workbook";
    const bool isXml = name.ends_with(".xml");
    if (name == "tqdata/sourcefile.csv")
        return SCDeclareConstant::SFT_XTQF;
    if (isXml && (name.starts_with("xl/worksheets/") || name.substr(name.rfind('/') + 1).starts_with(workbook)))
        return SCDeclareConstant::SFT_XLSX;
    return SCDeclareConstant::SFT_UNKNOWN;
}

EType FindTypeOfZip(Port::TFile file, std::uint64_t fileSize) {
    constexpr std::size_t headerSize = 46;
    // The first names of a directory that is longer than any in use tell as well.
    constexpr std::uint64_t directoryMax = 16 << 20;
    const SExtent extent = FindZipDirectory(file, fileSize);
    const std::string bytes =
        ReadAt(file, extent.offset, static_cast<std::size_t>(std::min(extent.size, directoryMax)));
    std::string_view directory = bytes;
    EType found = SCDeclareConstant::SFT_UNKNOWN;
    while (found == SCDeclareConstant::SFT_UNKNOWN && directory.size() > headerSize &&
           directory.starts_with("PK\x01\x02"sv)) {
        const std::size_t nameSize = NumberAt(directory, 28, 2);
        const std::size_t size = headerSize + nameSize + NumberAt(directory, 30, 2) + NumberAt(directory, 32, 2);
        found = FindTypeByName(ComparableName(directory.substr(headerSize, nameSize)));
        directory.remove_prefix(std::min(size, directory.size()));
    }
    return found;
}

/// The reader of workbooks finds out by itself what a compound file holds; this tells what to call it.
EType FindTypeOfCompoundFile(Port::TFile file, std::string_view head) {
    constexpr std::size_t directoryStart = 2048;
    const unsigned shift = static_cast<unsigned>(NumberAt(head, 30, 2)) & 0x0F;
    const std::uint64_t offset = (NumberAt(head, 48, 4) + 1) << shift;
    const bool isEncrypted =
        ReadAt(file, offset, directoryStart).find("E\0n\0c\0r\0y\0p\0t\0e\0d\0P\0a\0c\0k\0a\0g\0e\0\0\0"sv) !=
        std::string::npos;
    return isEncrypted ? SCDeclareConstant::SFT_XLSX : SCDeclareConstant::SFT_XLS;
}

/// By marks of a file that is complete without another one in or around it.
EType FindTypeByMark(std::string_view head) {
    static constexpr std::pair<std::string_view, EType> marks[] = {
        {"\0\1\0\0Standard Jet DB"sv, SCDeclareConstant::SFT_MDB},
        {"\0\1\0\0Standard ACE DB"sv, SCDeclareConstant::SFT_ACCDB},
        // The first record of a workbook without a compound file around it, by its versions.
        {"\x09\x00\x04\x00"sv, SCDeclareConstant::SFT_XLS},
        {"\x09\x02\x06\x00"sv, SCDeclareConstant::SFT_XLS},
        {"\x09\x04\x06\x00"sv, SCDeclareConstant::SFT_XLS},
        {"\x09\x08\x08\x00"sv, SCDeclareConstant::SFT_XLS},
        {"\x09\x08\x10\x00"sv, SCDeclareConstant::SFT_XLS},
    };
    const auto* const found =
        std::ranges::find_if(marks, [head](const auto& mark) { return head.starts_with(mark.first); });
    return found == std::end(marks) ? SCDeclareConstant::SFT_UNKNOWN : found->second;
}

struct SOther {
    std::size_t at;
    std::string_view mark;
    const char* what;
};
constexpr const char* image = "an image";
constexpr const char* compressed = "compressed data, which must be decompressed first";
constexpr SOther others[] = {
    {0, zipMark, "a zip archive that contains neither a workbook (xlsx) nor the data of a package (xtqf)"},
    {0, "PK\x05\x06"sv, "an empty zip archive"},
    {0, compoundMark, "a workbook (xls) or another compound file"},
    {0, "%PDF-"sv, "a PDF document"},
    {0, "\x89PNG\r\n"sv, image},
    {0, "\xFF\xD8\xFF"sv, image},
    {0, "GIF87a"sv, image},
    {0, "GIF89a"sv, image},
    {0, "II*\0"sv, image},
    {0, "MM\0*"sv, image},
    {8, "WEBPVP8"sv, image},
    {0, "\x1F\x8B"sv, compressed},
    {4, "1AY&SY"sv, compressed},
    {0,
     "\xFD"
     "7zXZ\0"sv,
     compressed},
    {0, "\x28\xB5\x2F\xFD"sv, compressed},
    {0, "7z\xBC\xAF\x27\x1C"sv, compressed},
    {0, "Rar!\x1A\x07"sv, compressed},
};

} // namespace

std::optional<EType> SCContentProbe::FindType(Port::TFile file, const CFileHead& head) {
    constexpr std::size_t compoundHeaderSize = 512;
    const std::string_view bytes = head.Bytes();
    EType type = SCDeclareConstant::SFT_UNKNOWN;
    if (bytes.starts_with(zipMark))
        type = FindTypeOfZip(file, static_cast<std::uint64_t>(head.Size()));
    else if (bytes.size() >= compoundHeaderSize && bytes.starts_with(compoundMark))
        type = FindTypeOfCompoundFile(file, bytes);
    else
        type = FindTypeByMark(bytes);
    return type == SCDeclareConstant::SFT_UNKNOWN ? std::nullopt : std::optional(type);
}

std::string SCContentProbe::DescribeOther(std::string_view file, std::string_view head, bool isSearched,
                                          bool isConverted) {
    if (!isSearched && head.starts_with(zipMark))
        return "seems to be a zip archive, such as a workbook or package; give --type xlsx or --type xtqf";
    if (!isSearched && head.starts_with(compoundMark))
        return "seems to be a workbook; give --type xls, or --type xlsx for an encrypted one";
    const std::string byForce = "; give --type csv (or tsv, fix) to read it as text";
    if (const EType type = FindTypeByMark(head); type != SCDeclareConstant::SFT_UNKNOWN)
        return "seems to be a workbook or database; give --type " + SCTypeNames::Of(type);
    if (head.starts_with(zipMark) && ComparableName(file).ends_with(".accdt"))
        return "a database template, which has no tables; create a database from it first";
    for (const SOther& other : others)
        if (head.substr(std::min(other.at, head.size())).starts_with(other.mark))
            return "seems to be " + std::string(other.what) + byForce;
    if (head.find('\0') == std::string_view::npos)
        return "";
    if (const auto encoding = SCTextEncodings::FindByNuls(head); encoding && !isConverted)
        return "seems to be UTF-16 text without a BOM; give --encoding " + SCTextEncodings::NameOf(*encoding);
    return "is not text: it contains NUL bytes" + byForce;
}

void SCContentProbe::RefuseUtf16(const std::string& name, std::string_view head) {
    if (SCTextProbe::HasUtf16Bom(head))
        throw CFailure(EExitStatus::Unsupported, name, "is UTF-16 text; give --type tsv (or csv)");
}

} // namespace NSTQ::Tool
