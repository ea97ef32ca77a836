// Access databases built byte by byte for tests: mdb of Jet 3 and Jet 4, accdb of 2007 to 2019, right or wrong on
// purpose. It shares no code with the reader.
#pragma once

#include "support/AccessTable.h"

#include <memory>

namespace NSTQ::Tests {

/// A row of MSysQueries.
struct SAccessQueryRow {
    unsigned char attribute; ///< 0 start, 1 type, 3 options, 5 table, 6 column, 8 condition, 11 order, 255 end
    std::optional<std::int64_t> flag = {};
    std::string strExpression = {};
    std::string strName1 = {};
    std::string strName2 = {};
};

class CAccessWriter {
public:
    static constexpr std::int64_t systemFlag = -2147483646; ///< 0x80000002
    static constexpr std::int64_t hiddenFlag = 8;

    explicit CAccessWriter(EJet version);

    /// The one in the header, which encrypts nothing.
    void SetPassWord(std::string passWord) { m_strPassWord = std::move(passWord); }
    void SetCodePage(unsigned codePage) { m_uCodePage = codePage; }
    /// Encodes the pages of Jet 3 and 4. Otherwise it is only written into the header, for pages that are encrypted
    /// afterwards.
    void SetKey(std::uint32_t key) { m_uKey = key; }

    CAccessTable& AddTable(const std::string& name, std::vector<SAccessColumn> columns,
                           SAccessTableOptions options = {}, std::int64_t flags = 0);
    /// A row of the catalogue without pages: a linked table, a form, ...
    void AddObject(const std::string& name, int type, std::int64_t flags) {
        Catalogue(m_nextId++, name, type, flags);
    }
    /// Columns and condition as in SQL. `flags` 0 is a selection.
    void AddQuery(const std::string& name, const std::vector<SAccessQueryRow>& rows, std::int64_t flags = 0);

    /// Writes what is missing and returns the pages; nothing may be added afterwards.
    CAccessPages& Finish();

    CAccessPages& Pages() { return m_pages; }
    CAccessTable& Catalogue() { return *m_tables.front(); }
    const CRecordPages& Maps() const { return m_maps; }

private:
    CAccessTable& MakeTable(std::vector<SAccessColumn> columns, SAccessTableOptions options);
    void Catalogue(std::int64_t id, const std::string& name, int type, std::int64_t flags);
    void WriteHeader();

    CAccessPages m_pages;
    CRecordPages m_maps;
    std::vector<std::unique_ptr<CAccessTable>> m_tables;
    CAccessTable* m_pQueries = nullptr;
    std::int64_t m_nextId = -2147483000;
    std::string m_strPassWord;
    unsigned m_uCodePage = 1252;
    std::uint32_t m_uKey = 0;
};

} // namespace NSTQ::Tests
