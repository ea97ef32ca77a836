// What the workbook part says: the sheets in their order, the names that stand for ranges, the system of dates.
#pragma once

#include "providers/workbook/IWorkbook.h"
#include "providers/xlsx/CPackage.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace NSTQ::Providers {

class CWorkbook {
public:
    /// Throws CSourceError for a package without a workbook and for a worksheet without its part or with an external
    /// one.
    explicit CWorkbook(const CPackage& package);

    /// As IWorkbook says.
    const std::vector<std::u16string>& GetSheetNames() const { return m_sheetNames; }
    /// For each sheet the part that holds its cells.
    const std::vector<std::string>& GetSheetParts() const { return m_sheetParts; }
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

    std::vector<std::u16string> m_sheetNames;
    std::vector<std::string> m_sheetParts;
    std::vector<std::size_t> m_tabs; ///< for each tab of the workbook the index of its sheet or noSheet
    std::unordered_map<std::u16string, std::size_t> m_sheetsByName;
    std::vector<SNamedRange> m_names;
    bool m_isDate1904 = false;
    std::string m_strStylesPart;
    std::string m_strSharedStringsPart;
};

} // namespace NSTQ::Providers
