// Access databases built byte by byte for tests: mdb of Jet 3 and Jet 4, accdb of 2007 to 2019, right or wrong on
// purpose. What it knows of the format is its own and is not shared with the reader.
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

    /// Of the header, with which nothing is encrypted.
    void SetPassWord(std::string passWord) { m_strPassWord = std::move(passWord); }
    void SetCodePage(unsigned codePage) { m_uCodePage = codePage; }
    /// Jet 3 and 4: encodes the pages. Otherwise it only stands in the header, for pages that are encrypted
    /// afterwards.
    void SetKey(std::uint32_t key) { m_uKey = key; }

    CAccessTable& AddTable(const std::string& name, std::vector<SAccessColumn> columns,
                           SAccessTableOptions options = {}, std::int64_t flags = 0);
    /// A row of the catalogue without pages: a linked table, a form, ...
    void AddObject(const std::string& name, int type, std::int64_t flags) {
        Catalogue(m_nextId++, name, type, flags);
    }
    /// Columns and condition as they stand in SQL. `flags` 0 is a selection.
    void AddQuery(const std::string& name, const std::vector<SAccessQueryRow>& rows, std::int64_t flags = 0);

    /// Writes what was left open and gives the pages; nothing is added afterwards.
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
