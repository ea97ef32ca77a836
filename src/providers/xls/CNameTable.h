// The defined names of a workbook, and what they refer to. Names and the sheets that they refer to are in separate
// records and are combined at the end.
#pragma once

#include "providers/workbook/IWorkbook.h"
#include "providers/xls/CTextReader.h"

#include <optional>

namespace NSTQ::Providers {

class CNameTable {
public:
    static constexpr std::size_t noSheet = static_cast<std::size_t>(-1);

    /// Each reads the current record of `records`. Throws CSourceError when it is damaged.
    void AddSupBook(CRecordReader& records);
    void AddExternSheet(CRecordReader& records, STextForm form);
    void AddName(CRecordReader& records, STextForm form);

    /// The names that IWorkbook lists. `tabs` gives for each tab of the workbook the index of its sheet or noSheet.
    std::vector<SNamedRange> Resolve(const std::vector<std::size_t>& tabs) const;

private:
    /// A run of sheets in some workbook.
    struct SSheetRun {
        std::size_t supBook;
        std::uint16_t firstTab;
        std::uint16_t lastTab;
    };
    struct SName {
        std::u16string name;
        std::size_t owner; ///< the number of its tab from 1, 0 for one of the workbook
        std::optional<std::size_t> externSheet;
        SSheetRun sheets; ///< when externSheet has none
        SCellRange range;
    };

    static bool ParseRange(std::span<const unsigned char> formula, EBiff version, SName& name);
    static bool ParseRange5(std::span<const unsigned char> formula, SName& name);
    static bool ParseRange8(std::span<const unsigned char> formula, SName& name);
    std::size_t FindSheet(const SName& name, const std::vector<std::size_t>& tabs) const;

    std::vector<bool> m_isOwnBook; ///< for each SUPBOOK whether it means this workbook
    std::vector<SSheetRun> m_externSheets;
    std::vector<SName> m_names;
};

} // namespace NSTQ::Providers
