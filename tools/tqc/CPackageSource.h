// A package: a zip archive with a data file of delimited text, which is unpacked to be read.
#pragma once

#include "CLockableSource.h"
#include "CTemporaryCopy.h"
#include "CTextFile.h"
#include "CUnpackFolder.h"
#include "tqcAccess/CodePage.h"

#include <optional>
#include <string>

namespace NSTQ::Tool {

/// It removes the unpacked files at the end.
class CPackageSource final : public CLockableSource {
public:
    /// See SCSources::Open.
    CPackageSource(const SOptions& options, const CInputFile& input);

    SCDeclareConstant::ESourceFileType Type() const override { return SCDeclareConstant::SFT_XTQF; }
    std::unique_ptr<ISourceReader> OpenReader() override;
    const CTextFile* Text() const override { return m_text ? &*m_text : nullptr; }
    void LookInside() override;

private:
    CSourceDataInfo::ESourceDataOpen TryToPrepare() override;
    bool IsLocked() const override;
    std::string DescribeRefusal() const override;
    bool Unpack(bool mayAsk);
    void TakeText(const std::string& path);
    [[noreturn]] void Explain() const;

    CUnpackFolder m_folder; ///< before the description, which removes the folder, so that it outlives it
    CSourceDataInfo m_info;
    CTemporaryCopy m_converted; ///< the data file in UTF-8, if it is not read as it is
    std::optional<CTextFile> m_text;
    /// The code page of the data file, which may differ from that of the paths, which is restored afterwards.
    std::optional<Platform::CThreadCodePage> m_dataPage;
};

} // namespace NSTQ::Tool
