#include "CTextSource.h"

#include "AsciiCase.h"
#include "CFailure.h"
#include "SCContentProbe.h"
#include "SCPathText.h"
#include "SCTypeNames.h"

namespace NSTQ::Tool {

CTextSource::CTextSource(const SOptions& options, const CInputFile& input)
    : m_options(options), m_input(input), m_text(options,
                                                 {input.Name(), input.Path(), input.Stream(), input.Encoding(),
                                                  SCTextProbe::HasUtf16Bom(input.Head().Bytes())},
                                                 input.TextHead()),
      m_page(m_text.CodePage()), m_type(FindType()) {
    if (m_input.Type())
        return;
    const std::string other = SCContentProbe::DescribeOther(m_input.Name(), m_input.TextHead().Bytes(),
                                                            m_input.IsFile(), m_input.Encoding().has_value());
    if (!other.empty())
        throw CFailure(EExitStatus::Unsupported, m_input.Name(), other);
}

/// The library uses the extension and a first line that ends in CR LF; other line ends are handled here.
SCDeclareConstant::ESourceFileType CTextSource::FindType() {
    const auto described = Describe();
    const auto type = m_input.Type().value_or(FindTypeByName(described));
    const bool isTabbed = type == SCDeclareConstant::SFT_TXT;
    const bool isCsv = type == SCDeclareConstant::SFT_CSV;
    m_text.SetSeparator(isTabbed ? SCDataAccessDefine::TAB_CODE : isCsv ? SCDataAccessDefine::CAMMA_CODE : '\0');
    const bool isTold = m_input.Type() || (isTabbed && ToAsciiLowerText(m_input.Name()).ends_with(".tsv"));
    if (isTold || m_options.separator || !m_text.FindSeparator())
        return type;
    return m_text.Separator() == SCDataAccessDefine::TAB_CODE ? SCDeclareConstant::SFT_TXT
                                                              : SCDeclareConstant::SFT_CSV;
}

/// The type by the name or the first line.
SCDeclareConstant::ESourceFileType CTextSource::FindTypeByName(SCDeclareConstant::ESourceFileType described) const {
    // The library looks at the first line, which may not be one of the table.
    const bool isTold = m_options.skip == 0 || SCTypeNames::OfFile(m_input.Name()) == described;
    if (isTold && described != SCDeclareConstant::SFT_UNKNOWN && described != SCDeclareConstant::SFT_FIX)
        return described;
    const std::string_view head = m_text.Body();
    const auto sniffed = SCTextProbe::FindType(head, m_text.LineEnd());
    if (sniffed != SCDeclareConstant::SFT_UNKNOWN)
        return sniffed;
    const bool isCsv = m_options.separator || head.empty();
    return isCsv ? SCDeclareConstant::SFT_CSV : isTold ? described : SCDeclareConstant::SFT_UNKNOWN;
}

SCDeclareConstant::ESourceFileType CTextSource::Describe() {
    auto type = SCDeclareConstant::SFT_UNKNOWN;
    if (m_input.Stream() < 0) {
        const std::string path = SCPathText::ToLibrary(m_input.Path());
        m_info.SetCommonInfo(path.c_str(), m_input.Type().value_or(SCDeclareConstant::SFT_UNKNOWN));
        m_info.GetSourceFileType(type);
        // The reader of a package would open its unpacked data file; with another type it reads the given file.
        if (type == SCDeclareConstant::SFT_XTQF)
            m_info.SetXtqfSourceFilePath(path.c_str());
    }
    return m_input.IsFile() ? type : SCTypeNames::OfFile(m_input.Name());
}

void CTextSource::CheckReadable() const {
    const std::string& name = m_input.Name();
    if (m_type == SCDeclareConstant::SFT_UNKNOWN)
        throw CFailure(EExitStatus::Unsupported, name,
                       "unknown type: neither a comma, semicolon, bar nor TAB separates its fields; give --type, "
                       "--separator or --widths; see its columns with: tqc preview " +
                           name);
    if (m_type == SCDeclareConstant::SFT_FIX && m_options.widths.empty())
        throw CFailure(EExitStatus::Unsupported, name,
                       "fixed-length text needs --widths; see its columns with: tqc preview " + name);
    if (!m_options.sheet.empty())
        throw CFailure(EExitStatus::Usage, name,
                       "--sheet is for workbooks and databases; " + SCTypeNames::DescribeThis(m_type));
}

std::unique_ptr<ISourceReader> CTextSource::OpenReader() {
    CheckReadable();
    if (m_type == SCDeclareConstant::SFT_FIX)
        return m_text.OpenFixedLength(m_info);
    return m_text.OpenDelimited(m_info);
}

} // namespace NSTQ::Tool
