// An open workbook: what its data source and the rows read from it share.
#pragma once

#include "providers/xlsx/CNumberFormats.h"
#include "providers/xlsx/CSharedStrings.h"
#include "providers/xlsx/CWorkbook.h"

#include <string>

namespace NSTQ::Providers {

class CXlsxBook {
public:
    /// `path` names the file in descriptions of errors. Throws CSourceError.
    CXlsxBook(std::shared_ptr<IRandomAccess> input, std::string path)
        : m_strPath(std::move(path)), m_package(std::move(input)), m_workbook(m_package) {}

    /// Reads cell formats and shared texts, once; listing the sheets needs neither. Throws CSourceError.
    void LoadContents() {
        if (m_isLoaded)
            return;
        if (!m_workbook.GetStylesPart().empty() && m_package.HasPart(m_workbook.GetStylesPart()))
            m_formats = CNumberFormats(m_package, m_workbook.GetStylesPart());
        if (!m_workbook.GetSharedStringsPart().empty() && m_package.HasPart(m_workbook.GetSharedStringsPart()))
            m_sharedStrings = CSharedStrings(m_package, m_workbook.GetSharedStringsPart());
        m_isLoaded = true;
    }

    const std::string& GetPath() const { return m_strPath; }
    const CPackage& GetPackage() const { return m_package; }
    const CWorkbook& GetWorkbook() const { return m_workbook; }
    const CNumberFormats& GetFormats() const { return m_formats; }
    const CSharedStrings& GetSharedStrings() const { return m_sharedStrings; }

private:
    std::string m_strPath;
    CPackage m_package;
    CWorkbook m_workbook;
    bool m_isLoaded = false;
    CNumberFormats m_formats;
    CSharedStrings m_sharedStrings;
};

} // namespace NSTQ::Providers
