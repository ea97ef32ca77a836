// A workbook of zipped XML parts: the OPC package with what its parts say, behind the interface of all workbooks.
#pragma once

#include "providers/workbook/IWorkbook.h"
#include "providers/xlsx/CWorkbookPart.h"
#include "providers/xlsx/SharedParts.h"

namespace NSTQ::Providers {

class CXlsxBook : public IWorkbook {
public:
    /// As COpcPackage. Throws CSourceError.
    CXlsxBook(std::shared_ptr<IRandomAccess> input, bool readsAhead, std::string path)
        : m_path(std::move(path)), m_package(std::move(input), readsAhead), m_workbook(m_package) {}

    const std::string& GetPath() const override { return m_path; }
    const std::vector<std::u16string>& GetSheetNames() const override { return m_workbook.GetSheetNames(); }
    const std::vector<SNamedRange>& GetNames() const override { return m_workbook.GetNames(); }
    bool IsDate1904() const override { return m_workbook.IsDate1904(); }

    std::unique_ptr<ICellSource> OpenCells(std::size_t sheet) override;
    std::unique_ptr<ICellSource> OpenCellsAhead(std::size_t sheet) override;
    EDateKind GetDateKind(std::uint32_t style, double number) const override {
        return m_formats.GetKind(style, number);
    }
    std::optional<EDateKind> GetCommonDateKind(std::uint32_t style) const override {
        return m_formats.GetCommonKind(style);
    }
    const CTextPool& GetSharedTexts() const override { return m_sharedTexts; }

private:
    void LoadContents();

    std::string m_path;
    COpcPackage m_package;
    CWorkbookPart m_workbook;
    bool m_isLoaded = false;
    CNumberFormats m_formats;
    CTextPool m_sharedTexts;
};

} // namespace NSTQ::Providers
