// What the workbook part says: the sheets in their order, the names that stand for ranges, the system of dates.
#pragma once

#include "providers/xlsx/CPackage.h"
#include "providers/xlsx/SCCellReference.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace NSTQ::Providers {

/// A worksheet, hidden or not.
struct SSheet {
    std::u16string strName;
    std::string strPart;
};

/// A name that stands for a plain range of one worksheet.
struct SNamedRange {
    std::u16string strName; ///< without the prefix of built-in names
    bool isOfSheet;         ///< it belongs to its sheet, not to the workbook
    std::size_t sheet;
    SCellRange range;
};

class CWorkbook {
public:
    /// Throws CSourceError for a package without a workbook and for a worksheet without its part or with an external
    /// one.
    explicit CWorkbook(const CPackage& package);

    /// Chart, dialog and macro sheets are not among them.
    const std::vector<SSheet>& GetSheets() const { return m_sheets; }
    /// In the order of the workbook; hidden names and those of formulas, constants and several areas are left out.
    const std::vector<SNamedRange>& GetNames() const { return m_names; }
    bool IsDate1904() const { return m_isDate1904; }
    /// Names of parts; empty when there is none.
    const std::string& GetStylesPart() const { return m_strStylesPart; }
    const std::string& GetSharedStringsPart() const { return m_strSharedStringsPart; }

private:
    static constexpr std::size_t maxSheets = 65536;
    static constexpr std::size_t maxNames = 65536;
    static constexpr std::size_t noSheet = static_cast<std::size_t>(-1);

    /// By their identifiers.
    using CRelationshipMap = std::unordered_map<std::string, SRelationship>;

    void ReadSheet(CXmlScanner& xml, const CRelationshipMap& relationships);
    void ReadName(CXmlScanner& xml);
    std::size_t FindSheet(std::string_view reference) const;

    std::vector<SSheet> m_sheets;
    std::vector<std::size_t> m_tabs; ///< for each tab of the workbook its index in m_sheets or noSheet
    std::unordered_map<std::u16string, std::size_t> m_sheetsByName;
    std::vector<SNamedRange> m_names;
    bool m_isDate1904 = false;
    std::string m_strStylesPart;
    std::string m_strSharedStringsPart;
};

} // namespace NSTQ::Providers
