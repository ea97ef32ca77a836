// A source of delimited or fixed-length text, or of text whose type is not known yet.
#pragma once

#include "CInputFile.h"
#include "CTextFile.h"
#include "ISource.h"
#include "tqcAccess/CodePage.h"

namespace NSTQ::Tool {

class CTextSource final : public ISource {
public:
    /// See SCSources::Open.
    CTextSource(const SOptions& options, const CInputFile& input);

    SCDeclareConstant::ESourceFileType Type() const override { return m_type; }
    std::unique_ptr<ISourceReader> OpenReader() override;
    const CTextFile* Text() const override { return &m_text; }

private:
    SCDeclareConstant::ESourceFileType FindType();
    SCDeclareConstant::ESourceFileType FindTypeByName(SCDeclareConstant::ESourceFileType described) const;
    SCDeclareConstant::ESourceFileType Describe();
    void CheckReadable() const;

    const SOptions& m_options;
    const CInputFile& m_input;
    CTextFile m_text;
    Platform::CThreadCodePage m_page;
    CSourceDataInfo m_info;
    SCDeclareConstant::ESourceFileType m_type;
};

} // namespace NSTQ::Tool
