#include "CTextFile.h"

#include "AsciiCase.h"
#include "CCsvSourceReader.h"
#include "CFailure.h"
#include "CFixSourceReader.h"
#include "SCCodePageNames.h"
#include "SCEncodingGuess.h"
#include "SCSeparatorProbe.h"
#include "tqcAccess/CodePage.h"
#include "tqcAccess/ErrorText.h"

#include <algorithm>

namespace NSTQ::Tool {
namespace {

SLineEnd FindLineEnd(const SOptions& options, std::string_view head, char separator) {
    return options.lineEnd ? *options.lineEnd : SCTextProbe::FindLineEnd(head, separator);
}

/// For messages.
std::string NameSeparator(char separator) {
    return separator == SCDataAccessDefine::TAB_CODE ? "tab" : std::string("'") + separator + "'";
}

} // namespace

CTextFile::CTextFile(const SOptions& options, SPlace place, CFileHead head)
    : m_options(options), m_place(std::move(place)), m_head(std::move(head)),
      m_lineEnd(FindLineEnd(options, m_head.Bytes(), Separator())),
      m_codePage(IsConverted() ? Platform::CP_UTF8 : CodePageOf(options, m_head.Bytes())) {}

CSourceDataInfo::EReadCharSet CTextFile::CharSet() const {
    return IsConverted() ? CSourceDataInfo::RCS_AUTO : m_options.charSet;
}

std::string_view CTextFile::Head() const {
    const bool hasBom = CharSet() != CSourceDataInfo::RCS_ANSI && SCTextProbe::HasUtf8Bom(m_head.Bytes());
    return m_head.Bytes().substr(hasBom ? sizeof SCDataAccessDefine::BOM_UTF8 : 0);
}

std::string_view CTextFile::Body() const {
    std::string_view body = Head();
    const std::string end = m_lineEnd.Bytes();
    for (std::uint64_t line = 0; line < m_options.skip; ++line) {
        const std::size_t at = body.find(end);
        if (at == std::string_view::npos)
            return m_head.IsWholeFile() ? std::string_view() : Head();
        body.remove_prefix(at + end.size());
    }
    return body;
}

bool CTextFile::FindSeparator() {
    const auto found =
        SCSeparatorProbe::Find(Body(), m_head.IsWholeFile(), m_lineEnd, m_options.quoteNewLine, m_separator);
    if (found.separator != m_separator)
        m_lineEnd = FindLineEnd(m_options, m_head.Bytes(), found.separator);
    m_separator = found.separator;
    m_otherSeparator = found.rival;
    return m_separator != 0;
}

unsigned CTextFile::CodePageOf(const SOptions& options, std::string_view head) {
    const bool isUtf8 = options.charSet == CSourceDataInfo::RCS_UTF8 ||
                        (options.charSet == CSourceDataInfo::RCS_AUTO && SCTextProbe::HasUtf8Bom(head));
    return isUtf8 ? Platform::CP_UTF8 : options.codePage;
}

CTextFile::SCharacterSet CTextFile::CharacterSet() const {
    if (IsConverted())
        return {OriginalEncoding(), m_place.hasBom};
    if (m_options.charSet != CSourceDataInfo::RCS_ANSI && SCTextProbe::HasUtf8Bom(m_head.Bytes()))
        return {"utf-8", true};
    if (m_codePage != Platform::CP_UTF8)
        return {SCCodePageNames::NameOf(m_codePage), false};
    return {SCTextProbe::IsUtf8(m_head.Bytes()) ? "utf-8" : "", false};
}

std::string CTextFile::DescribeCharacterSet() const {
    const SCharacterSet set = CharacterSet();
    if (set.name.empty())
        return SCEncodingGuess::Describe(SCTextProbe::WholeLines(m_head.Bytes()));
    if (!IsConverted() && set.name != "utf-8")
        return "code page " + SCCodePageNames::Describe(m_codePage);
    std::string name = set.name;
    std::ranges::transform(name, name.begin(), ToAsciiUpper);
    return name + (set.hasBom ? " (BOM)" : "");
}

std::string CTextFile::DescribeInvalidText() const {
    return m_options.isEncodingGiven || !CharacterSet().name.empty() ? "" : DescribeCharacterSet();
}

std::vector<std::string> CTextFile::DescribeDoubts() const {
    std::vector<std::string> doubts;
    if (std::string text = DescribeInvalidText(); !text.empty())
        doubts.push_back(std::move(text));
    if (m_otherSeparator != 0)
        doubts.push_back("the separator is not clear, " + NameSeparator(m_separator) +
                         " is taken; if it is not the right one, give --separator " +
                         NameSeparator(m_otherSeparator));
    return doubts;
}

std::unique_ptr<ISourceReader> CTextFile::OpenDelimited(CSourceDataInfo& info) const {
    // UTF-8 is read in code page 65001, by the ANSI grammar, which keeps spaces inside fields. RCS_AUTO skips the
    // BOM; a file that is too short for that contains nothing to convert.
    const bool isChosenAnsi = CharSet() == CSourceDataInfo::RCS_ANSI;
    info.SetReadCharSet(isChosenAnsi || IsStream() ? CSourceDataInfo::RCS_ANSI : CSourceDataInfo::RCS_AUTO);
    info.SetKeepLineEnds(m_options.quoteNewLine);
    auto reader = std::make_unique<CCsvSourceReader>(m_options);
    reader->SetSeparator(Separator());
    reader->SetOriginalEncoding(OriginalEncoding());
    OpenFile(*reader, info);
    if (!isChosenAnsi && !IsStream() && Size() == 3 && SCTextProbe::HasUtf8Bom(m_head.Bytes()))
        reader->MoveFileEnd();
    reader->SetCharSet(CSourceDataInfo::RCS_ANSI);
    return reader;
}

std::unique_ptr<ISourceReader> CTextFile::OpenFixedLength(CSourceDataInfo& info) const {
    const std::uint64_t size = CFixSourceReader::LayoutSize(m_options.widths);
    if (size > std::uint64_t{m_options.maxLineSize} + 1)
        throw CFailure(EExitStatus::Limit, m_place.name,
                       "the sum of --widths and the number of columns is " + std::to_string(size) +
                           ", more than --max-line-size");
    const bool hasLineEnds = SCTextProbe::HasLineEnd(m_head.Bytes(), m_lineEnd);
    info.SetFixColLen(CFixSourceReader::LayOut(m_options.widths, hasLineEnds));
    info.SetReadCharSet(IsStream() ? CSourceDataInfo::RCS_ANSI : CharSet());
    auto reader =
        std::make_unique<CFixSourceReader>(static_cast<DWORD>(m_options.widths.size()), info, m_lineEnd, hasLineEnds);
    reader->SetOriginalEncoding(OriginalEncoding());
    OpenFile(*reader, info);
    return reader;
}

std::string CTextFile::OriginalEncoding() const {
    return IsConverted() ? SCTextEncodings::NameOf(*m_place.original) : "";
}

void CTextFile::OpenFile(NSTQCore::VCTextFileOperater& reader, CSourceDataInfo& info) const {
    info.SetDelimiter(m_lineEnd.first, m_lineEnd.second);
    reader.SetDelimiter(m_lineEnd.first, m_lineEnd.second);
    if (IsStream())
        reader.SetStream(m_head.IsWholeFile() ? -1 : m_place.stream, Head().data(),
                         static_cast<DWORD>(Head().size()));
    if (!reader.FileOpen(&info))
        throw CFailure(EExitStatus::NotFound, m_place.name, Platform::GetErrorText(reader.GetErrorCode()));
}

} // namespace NSTQ::Tool
