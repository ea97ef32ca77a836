#include "providers/xlsx/CXlsxBook.h"

#include "providers/workbook/CReadAheadCells.h"
#include "providers/xlsx/CSheetScanner.h"

namespace NSTQ::Providers {

namespace {

class CNoCells : public ICellSource {
public:
    bool Next(SCell&) override { return false; }
};

} // namespace

std::unique_ptr<ICellSource> CXlsxBook::OpenCells(std::size_t sheet) {
    const std::string& part = m_workbook.GetSheetPart(sheet);
    if (part.empty())
        return std::make_unique<CNoCells>();
    LoadContents();
    return std::make_unique<CSheetScanner>(m_package.OpenStreamedPart(part));
}

/// One thread decompresses and scans, the caller's converts.
std::unique_ptr<ICellSource> CXlsxBook::OpenCellsAhead(std::size_t sheet) {
    const std::string& part = m_workbook.GetSheetPart(sheet);
    if (part.empty() || !m_package.IsReadAhead(part))
        return OpenCells(sheet);
    LoadContents();
    return std::make_unique<CReadAheadCells>(std::make_unique<CSheetScanner>(m_package.OpenPlainPart(part)));
}

void CXlsxBook::LoadContents() {
    if (m_isLoaded)
        return;
    if (!m_workbook.GetStylesPart().empty() && m_package.HasPart(m_workbook.GetStylesPart()))
        m_formats = ReadNumberFormats(m_package, m_workbook.GetStylesPart());
    if (!m_workbook.GetSharedStringsPart().empty() && m_package.HasPart(m_workbook.GetSharedStringsPart()))
        m_sharedTexts = ReadSharedTexts(m_package, m_workbook.GetSharedStringsPart());
    m_isLoaded = true;
}

} // namespace NSTQ::Providers
