// Access databases built byte by byte for tests: mdb of Jet 3 and Jet 4, accdb of 2007 to 2019, right or wrong on
// purpose. It shares no code with the reader.
#pragma once

#include "support/Bytes.h"

#include <memory>
#include <optional>
#include <variant>
#include <vector>

namespace NSTQ::Tests {

/// The byte of page 0 that tells the versions apart.
enum class EJet : unsigned char { Jet3 = 0, Jet4 = 1, Ace12 = 2, Ace14 = 3, Ace15 = 4, Ace16 = 5, Ace17 = 6 };

/// The pages while they are built.
class CAccessPages {
public:
    explicit CAccessPages(EJet version) : m_version(version) {}

    EJet Version() const { return m_version; }
    bool IsJet3() const { return m_version == EJet::Jet3; }
    std::size_t Size() const { return IsJet3() ? 2048 : 4096; }
    std::uint32_t Count() const { return static_cast<std::uint32_t>(m_strBytes.size() / Size()); }

    /// Adds a page of zeros and returns its number.
    std::uint32_t Add();
    void Put(std::uint32_t page, std::size_t offset, std::string_view bytes);
    void Put(std::uint32_t page, std::size_t offset, std::uint64_t value, std::size_t width) {
        Put(page, offset, LittleEndian(value, width));
    }
    std::uint64_t Get(std::uint32_t page, std::size_t offset, std::size_t width) const;
    /// With RC4.
    void Encrypt(std::uint32_t page, std::size_t offset, std::size_t size, std::string_view key) {
        Put(page, offset, Rc4(key, m_strBytes.substr(page * Size() + offset, size)));
    }
    std::string& Bytes() { return m_strBytes; }

private:
    EJet m_version;
    std::string m_strBytes;
};

/// Where a record is.
struct SRecordPlace {
    std::uint32_t page = 0;
    std::uint32_t row = 0;
    std::string Pointer() const { return LittleEndian(page << 8 | row, 4); }
};

/// The data pages of one owner, which is a table, the long values or (0) the usage maps. Records fill them from their
/// ends.
class CRecordPages {
public:
    static constexpr std::uint32_t longValues = 0x4C41564C; ///< "LVAL"
    static constexpr unsigned pointerFlag = 0x4000;
    static constexpr unsigned deletedFlag = 0x8000; ///< also of a record that only a pointer leads to

    CRecordPages(CAccessPages& pages, std::uint32_t owner) : m_pages(pages), m_owner(owner) {}

    /// Puts a record on the last page, or on a new one when it does not fit.
    SRecordPlace Add(std::string_view record, unsigned flags = 0);
    void Put(SRecordPlace place, std::size_t offset, std::string_view bytes);
    const std::vector<std::uint32_t>& Numbers() const { return m_numbers; }
    /// The longest record that a page holds.
    std::size_t MostBytes() const { return m_pages.Size() - SlotsAt() - 2; }
    std::size_t SlotsAt() const { return m_pages.IsJet3() ? 10 : 14; }

private:
    std::size_t EndOfFree(std::uint32_t page, std::uint64_t rows) const;

    CAccessPages& m_pages;
    std::uint32_t m_owner;
    std::vector<std::uint32_t> m_numbers;
};

enum class EAccess : unsigned char {
    Boolean = 1,
    Byte,
    Integer,
    Long,
    Currency,
    Single,
    Double,
    Date,
    Binary,
    Text,
    Ole,
    Memo,
    Guid = 15,
    Numeric,
    Complex = 18,
    Large,
    ExtendedDate
};

struct SAccessColumn {
    std::string strName = {}; ///< UTF-8; Jet 3: bytes of the file's code page
    EAccess type = EAccess::Text;
    unsigned char scale = 0;
    bool isVariable = false;               ///< a type of fixed size among the variable ones, as system tables have it
    bool isCalculated = false;             ///< the value in a wrapper
    bool isDeleted = false;                ///< no longer in the definition, but in the rows
    bool isCompressed = true;              ///< texts of Jet 4 may be compressed
    std::optional<EAccess> shownType = {}; ///< the one in the definition, if that is not the type of the values
    std::optional<unsigned> position = {}; ///< where it is shown; by default its place among the columns

    bool IsInVariablePart() const;
    bool IsLongValue() const { return type == EAccess::Ole || type == EAccess::Memo; }
    /// The bytes of a value of fixed size; 0 for others and for a boolean, which is a bit of the null mask.
    unsigned FixedSize() const;
};

/// Nothing is NULL. Boolean: bool. Whole numbers, currency (in ten-thousandths) and complex columns: int64. Single,
/// double, date: double. Text, memo: UTF-8 (Jet 3: bytes of the code page). Numeric: digits without a point.
/// Binary, OLE, GUID, extended date: the bytes.
using AccessValue = std::variant<std::monostate, bool, std::int64_t, double, std::string>;
using AccessRow = std::vector<AccessValue>;

std::string Utf16Bytes(std::string_view utf8);

/// The bytes of a value that is not NULL; of a long value its content.
std::string AccessBytes(const SAccessColumn& column, const AccessValue& value, bool isJet3);

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
