// The content of the workbook part: the sheets in their order, the names of ranges, the date system.
#pragma once

#include "providers/workbook/IWorkbook.h"
#include "providers/xlsx/COpcPackage.h"

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace NSTQ::Providers {

class CWorkbookPart {
public:
    /// Throws CSourceError for a package without a workbook. Missing worksheets are not detected here.
    explicit CWorkbookPart(const COpcPackage& package);

    /// As IWorkbook says.
    const std::vector<std::u16string>& GetSheetNames() const { return m_sheetNames; }
    /// For each sheet the part that holds its cells, which may be missing from the package; empty for a sheet that
    /// states that it has none, such as old macro modules. Throws CSourceError when it is in another file or the
    /// package has no relationship of that identifier.
    const std::string& GetSheetPart(std::size_t sheet) const;
    const std::vector<SNamedRange>& GetNames() const { return m_names; }
    bool IsDate1904() const { return m_isDate1904; }
    /// Names of parts; empty when there is none.
    const std::string& GetStylesPart() const { return m_stylesPart; }
    const std::string& GetSharedStringsPart() const { return m_sharedStringsPart; }

private:
    static constexpr std::size_t maxSheets = 65536;
    static constexpr std::size_t maxNames = 65536;
    /// Of sheets, their parts and ranges in all: whoever lists them keeps each several times.
    static constexpr std::size_t maxNameBytes = 1U << 21;
    static constexpr std::size_t noSheet = static_cast<std::size_t>(-1);

    /// By their identifiers.
    using CRelationshipMap = std::unordered_map<std::string, SRelationship>;

    void ReadSheet(CXmlScanner& xml, const CRelationshipMap& relationships);
    void ReadName(CXmlScanner& xml);
    void CountName(const CXmlScanner& xml, std::string_view name);
    std::size_t FindSheet(std::string_view reference) const;

    std::vector<std::u16string> m_sheetNames;
    std::vector<std::optional<std::string>> m_sheetParts; ///< none where GetSheetPart throws
    std::vector<std::size_t> m_tabs; ///< for each tab of the workbook the index of its sheet or noSheet
    std::unordered_map<std::u16string, std::size_t> m_sheetsByName;
    std::vector<SNamedRange> m_names;
    std::size_t m_nameBytes = 0;
    bool m_isDate1904 = false;
    std::string m_stylesPart;
    std::string m_sharedStringsPart;
};

} // namespace NSTQ::Providers
