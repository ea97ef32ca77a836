// One table of an Access database that is being built: its definition, its rows, its usage maps.
#pragma once

#include "support/AccessValues.h"

namespace NSTQ::Tests {

enum class ERowPlace {
    Plain,
    Deleted, ///< marked in its slot
    Moved    ///< its slot refers to a pointer to it
};

struct SAccessRowOptions {
    ERowPlace place = ERowPlace::Plain;
    std::size_t columns = SIZE_MAX; ///< only so many, as in a row from before the others were added
};

struct SAccessTableOptions {
    enum class ELongValue { BySize, InRow, OnePage, Chain } longValue = ELongValue::BySize;
    std::size_t chainPiece = SIZE_MAX; ///< most bytes of each piece of a chain
    bool hasIndex = true;
    bool hasMapPages = false; ///< the usage map refers to pages of bits
    bool isSystem = false;
};

class CAccessTable {
public:
    /// `maps` are the records of the file's usage maps.
    CAccessTable(CAccessPages& pages, CRecordPages& maps, std::vector<SAccessColumn> columns,
                 SAccessTableOptions options);

    CAccessTable& Add(const AccessRow& row, SAccessRowOptions options = {});
    SAccessTableOptions& Options() { return m_options; }
    /// Writes the definition and the usage maps; nothing may be added afterwards.
    void Finish();

    std::uint32_t DefinitionPage(std::size_t index = 0) const { return m_definitionPages.at(index); }
    const std::vector<std::uint32_t>& RowPages() const { return m_rows.Numbers(); }
    const std::vector<std::uint32_t>& LongPages() const { return m_long.Numbers(); }
    SRecordPlace MapPlace() const { return m_usedMap; }

private:
    std::string Definition() const;
    std::string ColumnEntry(std::size_t number, unsigned variableBefore, unsigned fixedOffset) const;
    std::string IndexEntries() const;
    std::string Name(std::string_view name) const;
    std::string Record(const AccessRow& row, std::size_t columns);
    std::string LongValue(const std::string& content);
    void WriteDefinition();
    void WriteMap(SRecordPlace place, std::vector<std::uint32_t> numbers);

    CAccessPages& m_pages;
    std::vector<SAccessColumn> m_columns;
    SAccessTableOptions m_options;
    std::vector<std::uint32_t> m_definitionPages;
    CRecordPages& m_maps;
    CRecordPages m_rows;
    CRecordPages m_moved;
    CRecordPages m_long;
    SRecordPlace m_usedMap;
    SRecordPlace m_freeMap;
    SRecordPlace m_longMap;
    std::uint32_t m_rowCount = 0;
};

} // namespace NSTQ::Tests
