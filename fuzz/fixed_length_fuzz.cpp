// Fixed-length text. There is no plain reader to compare with: the same file, read in whole fills and in short reads,
// must give the same records, whose bytes are in the file in this order.
#include "CFixDataAccess.h"
#include "FuzzSupport.h"
#include "support/TempFolder.h"

#include <algorithm>
#include <numeric>

namespace {

using namespace NSTQ;
using namespace NSTQ::Fuzz;
using namespace NSTQ::NSTQCore;

constexpr std::array<DWORD, 5> fieldCounts = {16, 0, 1, 2, 3};
constexpr std::array<DWORD, 10> lineSizes = {4096, 65535, 70000, 0, 1, 2, 3, 8, 16, 40};
constexpr std::array<DWORD, 7> fieldSizes = {255, 65535, 1, 2, 3, 4, 8};
constexpr std::array<std::size_t, 6> failingReads = {0, 2, 3, 5, 9, 20};

struct SLayout {
    DWORD maxFields;
    DWORD maxLine;
    DWORD maxField;
    SLineEnd lineEnd;
    std::vector<WORD> widths;
};

struct SRow {
    bool result = false;
    bool hasNext = false;
    DWORD count = 0;
    std::vector<std::string> fields;

    bool operator==(const SRow&) const = default;
};

class CFuzzedReader : public CFixDataAccess {
public:
    CFuzzedReader(const SLayout& layout, const CSourceDataInfo& info)
        : CFixDataAccess(layout.maxFields, layout.maxLine, layout.maxField, &info), m_layout(layout) {
        SetDelimiter(layout.lineEnd.pre, layout.lineEnd.post);
    }

    SRow Read() {
        const char** fields = nullptr;
        const WORD* lengths = nullptr;
        SRow row;
        row.result = GetLineData(fields, lengths, row.count);
        row.hasNext = HasNextLineData();
        Require(fields != nullptr && row.count <= m_layout.widths.size(), "no more columns than the layout has");
        const std::size_t held = std::min(row.count, m_layout.maxFields);
        CheckRow(fields, lengths, held, m_layout.maxField,
                 {m_pLineBuff.get(), std::min<std::size_t>(m_layout.maxLine, 65535) + 1});
        for (std::size_t i = 0; i < held; ++i) {
            const auto& field = row.fields.emplace_back(fields[i], lengths[i]);
            Require(field.size() <= m_layout.widths[i], "a field is no longer than its column");
            Require(std::none_of(field.begin(), field.end(), [](unsigned char c) { return c < ' '; }),
                    "control bytes are dropped");
            Require(!field.starts_with(' '), "leading blanks are dropped");
        }
        return row;
    }

private:
    SLayout m_layout;
};

SLayout ReadLayout(CFuzzInput& input) {
    SLayout layout{.maxFields = input.Pick(fieldCounts),
                   .maxLine = input.Pick(lineSizes),
                   .maxField = input.Pick(fieldSizes),
                   .lineEnd = input.Pick(lineEnds),
                   .widths = std::vector<WORD>(input.Byte() % 9)};
    for (WORD& width : layout.widths) {
        // Usually widths that fit a line; a byte from 0xF0 on begins a width of two bytes.
        width = input.Byte();
        if (width >= 0xF0)
            width = static_cast<WORD>((width << 8) | input.Byte());
    }
    return layout;
}

/// A description of a file with or without line ends. Only the preview of a file sets that.
CSourceDataInfo& Description(bool hasLineEnds) {
    static CSourceDataInfo without, with;
    static const bool isPrepared = [] {
        const Tests::CTempFolder folder;
        with.SetCommonInfo(folder.WriteFile("rows.txt", "a\r\n").c_str(), SCDeclareConstant::SFT_FIX);
        return with.PrepareReadSourceData(false) == CSourceDataInfo::SDO_FIX_FILE && with.GetIsExistFixCRLF();
    }();
    Require(isPrepared, "a description can be prepared");
    return hasLineEnds ? with : without;
}

bool FitsLineBuffer(const SLayout& layout) {
    const std::size_t total = std::accumulate(layout.widths.begin(), layout.widths.end(), layout.widths.size());
    return total <= std::min<std::size_t>(layout.maxLine, 65535) + 1;
}

std::vector<SRow> ReadAll(CFuzzedReader& reader, std::size_t maxReads, bool moves) {
    std::vector<SRow> rows;
    while (reader.HasNextLineData() && (moves || rows.size() < 3)) {
        Require(rows.size() < maxReads, "every read takes at least a byte");
        rows.push_back(reader.Read());
    }
    rows.push_back(reader.Read());
    return rows;
}

/// Checks that the bytes of the fields, without spaces, are in the file in this order: the reader may drop bytes and
/// change TABs to spaces, but add nothing.
void CheckBytes(const std::vector<SRow>& rows, std::string_view bytes) {
    std::size_t at = 0;
    for (const SRow& row : rows)
        for (const std::string& field : row.fields)
            for (const char c : field) {
                if (c == ' ')
                    continue;
                at = bytes.find(c, at);
                Require(at != bytes.npos, "fields hold the file's bytes in their order");
                ++at;
            }
}

std::vector<SRow> ReadFile(const SLayout& layout, const CSourceDataInfo& info, std::size_t size, bool moves,
                           std::size_t readSize, std::size_t failing) {
    CFuzzedReader reader(layout, info);
    const CReadFaults faults(readSize, failing);
    const bool isOpen = reader.FileOpen(&info);
    Require(isOpen == FitsLineBuffer(layout), "just the layouts that fit the line buffer are taken");
    if (!isOpen) {
        Require(reader.GetErrorCode() == 87, "the error tells of the layout");
        return {};
    }
    return ReadAll(reader, size + (failing == 0 ? 2 : 4), moves);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CFuzzInput input(data, size);
    const SLayout layout = ReadLayout(input);
    const CAnsiPage page(input.Pick(codePages));
    Scan::EKernel chosen{};
    const bool hasLineEnds = !input.Flag(chosen);
    const Tests::CKernel kernel(chosen);
    const std::size_t readSize = input.Pick(readSizes);
    const std::size_t failing = input.Pick(failingReads);
    const std::string_view bytes = input.Rest();

    const CMemoryFile file(bytes);
    CSourceDataInfo& info = Description(hasLineEnds);
    info.SetCommonInfo(file.Path().c_str(), SCDeclareConstant::SFT_FIX);
    info.SetReadCharSet(CSourceDataInfo::RCS_ANSI);
    info.SetFixColLen(layout.widths);

    // A read does not advance if no column has a width.
    const bool moves = std::any_of(layout.widths.begin(), layout.widths.end(), [](WORD width) { return width > 0; });
    const auto rows = ReadFile(layout, info, bytes.size(), moves, 64000, 0);
    CheckBytes(rows, bytes);
    const auto shortRows = ReadFile(layout, info, bytes.size(), moves, readSize, failing);
    if (failing == 0)
        Require(rows == shortRows, "short reads change nothing");
    else
        CheckBytes(shortRows, bytes);
    return 0;
}
