#include "DelimitedRun.h"

#include "CCsvDataAccess.h"
#include "text/ReferenceReader.h"

#include <algorithm>

namespace NSTQ::Fuzz {
namespace {

using NSTQCore::CSourceDataInfo;
using Tests::CRecord;
using Tests::CSettings;

constexpr std::array<std::uint32_t, 6> fieldCounts = {16, 0, 1, 2, 3, 300};
constexpr std::array<std::uint32_t, 12> lineSizes = {4096, 65535, 70000, 1, 2, 3, 4, 5, 8, 16, 40, 255};
constexpr std::array<std::uint32_t, 8> fieldSizes = {255, 65535, 0, 1, 2, 3, 4, 8};
constexpr std::array<std::size_t, 8> failingReads = {0, 2, 3, 4, 6, 9, 14, 40};

/// How many bytes are inserted before those of the input, so that these are at the end of a fill.
constexpr std::array<std::size_t, 4> fillings = {63970, 63990, 63998, 64000};

class CFuzzedReader : public NSTQCore::CCsvDataAccess {
public:
    explicit CFuzzedReader(const CSettings& settings)
        : CCsvDataAccess(settings.maxFields, settings.maxLine, settings.maxField, settings.quoteNewLine),
          m_settings(settings) {
        SetSeparator(settings.separator);
        SetDelimiter(settings.pre, settings.post);
    }

    void Read(CRecord& record) {
        const char** fields = nullptr;
        const WORD* lengths = nullptr;
        const char* raw = nullptr;
        DWORD rawSize = 0;
        record.result = m_settings.raw ? GetLineData(fields, lengths, record.count, raw, rawSize)
                                       : GetLineData(fields, lengths, record.count);
        Keep(record, fields, lengths);
        record.raw.assign(raw == nullptr ? "" : raw, rawSize);
    }

    void ReadLine(DWORD line, CRecord& record) {
        const char** fields = nullptr;
        const WORD* lengths = nullptr;
        record.result = GetSpecificLineData(line, fields, lengths, record.count);
        Keep(record, fields, lengths);
        record.raw.clear();
    }

private:
    void Keep(CRecord& record, const char* const* fields, const WORD* lengths) {
        record.assigned = fields != nullptr;
        const DWORD held = record.assigned ? std::min(record.count, m_settings.maxFields) : 0;
        const std::size_t lineSize = std::min<std::size_t>(m_settings.maxLine, 65535) + 1;
        CheckRow(fields, lengths, held, m_settings.maxField, {m_pLineBuff.get(), lineSize});
        record.fields.clear();
        for (DWORD i = 0; i < held; ++i)
            record.fields.emplace_back(fields[i], lengths[i]);
        record.hasNext = HasNextLineData();
        record.position = GetReadPosition();
        record.failedRead = GetErrorCode() != 0;
        record.openQuote = GetOpenQuotePosition();
        Require(m_dwReadBuffPos <= m_dwReadSize && m_dwReadSize <= NSTQCore::SCDataAccessDefine::READ_BUFF_SIZE,
                "the read position stays inside the fill");
    }

    CSettings m_settings;
};

CSettings ReadSettings(CFuzzInput& input, std::uint8_t flags) {
    CSettings settings;
    settings.raw = (flags & 1) != 0;
    settings.quoteNewLine = (flags & 2) != 0;
    settings.keepLineEnds = (flags & 0x20) != 0;
    settings.separator = input.Pick(separators);
    const SLineEnd lineEnd = input.Pick(lineEnds);
    settings.pre = lineEnd.pre;
    settings.post = lineEnd.post;
    settings.maxFields = input.Pick(fieldCounts);
    settings.maxLine = input.Pick(lineSizes);
    settings.maxField = input.Pick(fieldSizes);
    return settings;
}

void RequireEqual(const CRecord& expected, const CRecord& actual) {
    Require(actual.result == expected.result, "the result is the plain reader's");
    Require(actual.assigned == expected.assigned, "the arrays are handed out as by the plain reader");
    Require(actual.count == expected.count, "the count is the plain reader's");
    Require(actual.fields == expected.fields, "the fields are the plain reader's");
    Require(actual.hasNext == expected.hasNext, "whether data remain is as with the plain reader");
    Require(actual.position == expected.position, "the progress is the plain reader's");
    Require(actual.failedRead == expected.failedRead, "a failed read shows as with the plain reader");
    Require(actual.openQuote == expected.openQuote, "an open quote is where the plain reader met it");
    Require(!expected.rawFits || actual.raw == expected.raw, "the raw record is the plain reader's");
}

/// Reads to the end and once more. Returns the bytes of the raw records; `isWhole` is set to whether all of them were
/// returned.
std::string ReadAll(CFuzzedReader& tested, Tests::CReferenceReader& plain, std::size_t maxReads, bool& isWhole) {
    CRecord expected, actual;
    std::string raw;
    isWhole = true;
    std::size_t reads = 0;
    for (bool isLast = false; !isLast; ++reads) {
        Require(reads < maxReads, "every read takes at least a byte");
        isLast = !plain.HasNext();
        expected.count = actual.count = 77;
        plain.Read(expected);
        tested.Read(actual);
        RequireEqual(expected, actual);
        raw += actual.raw;
        isWhole &= actual.assigned && expected.rawFits && !actual.failedRead;
    }
    return raw;
}

} // namespace

void RunDelimited(CFuzzInput input, bool utf8) {
    const std::uint8_t flags = input.Byte();
    const Tests::CKernel kernel(CFuzzInput::ToKernel(flags >> 2));
    CSettings settings = ReadSettings(input, flags);
    const CAnsiPage page(input.Pick(codePages));
    std::size_t readSize = input.Pick(readSizes);
    std::size_t failing = input.Pick(failingReads);
    const std::uint8_t choice = input.Byte();
    const auto charSet = (choice & 0x80) != 0 ? CSourceDataInfo::RCS_AUTO
                         : utf8               ? CSourceDataInfo::RCS_UTF8
                                              : CSourceDataInfo::RCS_ANSI;
    std::string bytes(input.Rest());
    // Rarely, and only with few records and reads, because such an input takes the time of many others.
    if ((choice & 0x78) == 0x78 && settings.maxLine >= 4096) {
        bytes.insert(0, fillings[choice & 3], 'x');
        readSize = readSizes.front();
    }
    // Kernels do not handle short texts.
    if ((flags & 0x10) != 0)
        bytes.append(160, 'y');
    // To detect the character set, opening reads until there are four bytes.
    const std::size_t first = charSet == CSourceDataInfo::RCS_ANSI ? 1 : 4;
    // Only a read that returns bytes may fail: the two readers may differ in how often they read again at the end of
    // the file or for the first four bytes.
    if (readSize < first || failing > (bytes.size() + readSize - 1) / readSize)
        failing = 0;
    const CMemoryFile file(bytes);
    CSourceDataInfo info;
    info.SetCommonInfo(file.Path().c_str(), NSTQCore::SCDeclareConstant::SFT_CSV);
    info.SetReadCharSet(charSet);
    info.SetKeepLineEnds(settings.keepLineEnds);

    CFuzzedReader tested(settings);
    const CReadFaults faults(readSize, failing);
    Require(tested.FileOpen(&info), "the file can be opened");
    settings.utf8 = tested.GetCharSet() != CSourceDataInfo::RCS_ANSI;
    const bool hasMark = settings.utf8 && bytes.size() > 3 && bytes.starts_with("\xEF\xBB\xBF");
    Tests::CReferenceReader plain(settings, bytes, {readSize, failing, first}, hasMark ? 3 : 0);

    bool isWhole = false;
    // A failed read does not advance the position, nor does the next one if the data end there.
    const std::string raw = ReadAll(tested, plain, bytes.size() + (failing == 0 ? 3 : 5), isWhole);
    Require(!settings.raw || settings.utf8 || !isWhole || raw == bytes, "the raw records make up the file");

    CRecord expected, actual;
    expected.count = actual.count = 77;
    plain.ReadLine(choice & 7, expected);
    tested.ReadLine(choice & 7, actual);
    expected.raw.clear();
    RequireEqual(expected, actual);
}

} // namespace NSTQ::Fuzz
