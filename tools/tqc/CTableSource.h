// A workbook or database: its sheets or tables, and the reader over one of them.
#pragma once

#include "CFailure.h"
#include "CLockableSource.h"
#include "tqcAccess/ComError.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace NSTQ::Tool {

class CTableSource final : public CLockableSource {
public:
    /// A sheet or table.
    struct STable {
        struct SSize {
            DWORD rows;
            DWORD columns;
        };
        std::string name;
        Platform::HRESULT error;   ///< why it cannot be opened
        std::string reason;        ///< the same in the provider's words
        std::optional<SSize> size; ///< none when it cannot be opened
    };

    /// See SCSources::Open.
    CTableSource(const SOptions& options, const CInputFile& input, SCDeclareConstant::ESourceFileType type);

    SCDeclareConstant::ESourceFileType Type() const override { return m_type; }
    std::unique_ptr<ISourceReader> OpenReader() override;
    CTableSource* Tables() override { return this; }
    const std::vector<std::string>* ColumnNames() const override {
        return NamesItsColumns() ? &m_columnNames : nullptr;
    }

    // Several of them, one after the other: the source is opened once, and its password asked for once.

    /// Prepares the source and gives the positions of those that the options select in the names that it returns,
    /// which are all names, in UTF-8, and live as long as the source. Throws CFailure.
    const std::vector<std::string>& SelectTables(std::vector<std::size_t>& selected);
    /// Opens one of them, also after another one could not be opened. All have the same reader, which belongs to the
    /// source. Throws CFailure.
    ISourceReader& OpenTable(std::size_t position);
    /// "sheet" or "table".
    std::string TableKind() const { return NamesItsColumns() ? "table" : "sheet"; }

    /// All sheets or tables. Throws CFailure.
    std::vector<STable> ListTables();
    /// Their names alone; nobody is asked for a password. Throws CFailure.
    std::vector<std::string> ListNames();
    /// The failure of a sheet or table that cannot be opened.
    CFailure DescribeUnopened(const STable& table, const std::string& hint) const;

private:
    CSourceDataInfo::ESourceDataOpen TryToPrepare() override { return m_info.PrepareReadSourceData(true); }
    bool IsLocked() const override;
    void PrepareTables(bool mayAsk);
    void PrepareToRead();
    std::unique_ptr<CTableReader> MakeReader() const;
    bool TryToOpen(CTableReader& reader, std::size_t position, bool isFirst);
    [[noreturn]] void ExplainListing() const;
    bool NamesItsColumns() const;
    std::vector<std::string> TableNames() const;
    void TakeColumnNames(CTableReader& reader);
    static STable Look(const std::string& name, CTableReader& reader);

    SCDeclareConstant::ESourceFileType m_type;
    CSourceDataInfo m_info;
    std::vector<std::string> m_columnNames; ///< of the table that was opened last
    std::vector<std::string> m_names;       ///< of the tables
    std::unique_ptr<CTableReader> m_reader; ///< of OpenTable
};

} // namespace NSTQ::Tool
