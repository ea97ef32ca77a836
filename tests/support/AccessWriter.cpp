#include "support/AccessWriter.h"

#include <algorithm>
#include <bit>
#include <stdexcept>

namespace NSTQ::Tests {
namespace {

/// Numbers that Jet 4 repeats in definitions; their meaning is unknown.
constexpr std::uint32_t mark = 0x659;
constexpr std::uint32_t indexMark = 0x783;
constexpr std::size_t pageHeader = 8; ///< of a definition page
constexpr std::size_t longestInRow = 64;

std::size_t MapBytes(bool isJet3) {
    return isJet3 ? 128 : 64;
}

std::string Zeros(std::size_t count) {
    return std::string(count, '\0');
}

constexpr std::int64_t tablesId = 0x0F000001;
constexpr double creationDate = 45000.5;

/// MSysObjects, in the order of its rows.
std::vector<SAccessColumn> CatalogueColumns() {
    using enum EAccess;
    return {{"Id", Long},          {"ParentId", Long},   {"Name", Text},        {"Type", Integer},
            {"DateCreate", Date},  {"DateUpdate", Date}, {"Owner", Binary},     {"Flags", Long},
            {"Database", Memo},    {"Connect", Memo},    {"ForeignName", Text}, {"RmtInfoShort", Binary},
            {"RmtInfoLong", Memo}, {"Lv", Ole},          {"LvProp", Ole},       {"LvModule", Ole},
            {"LvExtra", Ole}};
}

std::vector<SAccessColumn> QueryColumns() {
    using enum EAccess;
    return {{"ObjectId", Long}, {"Attribute", Byte},  {"Order", Binary}, {"Name1", Text},
            {"Name2", Text},    {"Expression", Memo}, {"Flag", Integer}, {"LvExtra", Long}};
}

AccessValue TextOrNull(const std::string& text) {
    return text.empty() ? AccessValue() : AccessValue(text);
}

} // namespace

std::uint32_t CAccessPages::Add() {
    m_strBytes.resize(m_strBytes.size() + Size());
    return Count() - 1;
}

void CAccessPages::Put(std::uint32_t page, std::size_t offset, std::string_view bytes) {
    if (page >= Count() || offset + bytes.size() > Size())
        throw std::logic_error("outside a page");
    m_strBytes.replace(page * Size() + offset, bytes.size(), bytes);
}

std::uint64_t CAccessPages::Get(std::uint32_t page, std::size_t offset, std::size_t width) const {
    std::uint64_t value = 0;
    for (std::size_t i = width; i-- > 0;)
        value = value << 8 | static_cast<unsigned char>(m_strBytes.at(page * Size() + offset + i));
    return value;
}

std::size_t CRecordPages::EndOfFree(std::uint32_t page, std::uint64_t rows) const {
    return rows == 0 ? m_pages.Size() : m_pages.Get(page, SlotsAt() + 2 * (rows - 1), 2) & 0x1FFF;
}

SRecordPlace CRecordPages::Add(std::string_view record, unsigned flags) {
    const std::size_t countAt = SlotsAt() - 2;
    const auto fits = [&](std::uint32_t page) {
        const std::uint64_t rows = m_pages.Get(page, countAt, 2);
        return SlotsAt() + 2 * (rows + 1) + record.size() <= EndOfFree(page, rows) && rows < 255;
    };
    if (m_numbers.empty() || !fits(m_numbers.back())) {
        if (record.size() > MostBytes())
            throw std::logic_error("a record longer than a page");
        m_numbers.push_back(m_pages.Add());
        m_pages.Put(m_numbers.back(), 0, 0x0101, 2);
        m_pages.Put(m_numbers.back(), 4, m_owner, 4);
    }
    const std::uint32_t page = m_numbers.back();
    const std::uint64_t row = m_pages.Get(page, countAt, 2);
    const std::size_t start = EndOfFree(page, row) - record.size();
    m_pages.Put(page, start, record);
    m_pages.Put(page, SlotsAt() + 2 * row, start | flags, 2);
    m_pages.Put(page, countAt, row + 1, 2);
    m_pages.Put(page, 2, start - SlotsAt() - 2 * (row + 1), 2);
    return {page, static_cast<std::uint32_t>(row)};
}

void CRecordPages::Put(SRecordPlace place, std::size_t offset, std::string_view bytes) {
    const std::size_t start = m_pages.Get(place.page, SlotsAt() + 2 * place.row, 2) & 0x1FFF;
    m_pages.Put(place.page, start + offset, bytes);
}

CAccessTable::CAccessTable(CAccessPages& pages, CRecordPages& maps, std::vector<SAccessColumn> columns,
                           SAccessTableOptions options)
    : m_pages(pages), m_columns(std::move(columns)), m_options(options), m_definitionPages{pages.Add()}, m_maps(maps),
      m_rows(pages, m_definitionPages[0]), m_moved(pages, m_definitionPages[0]),
      m_long(pages, CRecordPages::longValues) {
    for (SRecordPlace* place : {&m_usedMap, &m_freeMap, &m_longMap})
        *place = maps.Add(Zeros(5 + MapBytes(pages.IsJet3())));
    const std::size_t perPage = pages.Size() - pageHeader;
    for (std::size_t size = Definition().size() - pageHeader; size > perPage; size -= perPage)
        m_definitionPages.push_back(pages.Add());
}

CAccessTable& CAccessTable::Add(const AccessRow& row, SAccessRowOptions options) {
    const std::string record = Record(row, std::min(options.columns, m_columns.size()));
    if (options.place == ERowPlace::Deleted) {
        m_rows.Add(record, CRecordPages::deletedFlag | CRecordPages::pointerFlag);
        return *this;
    }
    if (options.place == ERowPlace::Moved) {
        const SRecordPlace place = m_moved.Add(record, CRecordPages::deletedFlag);
        m_rows.Add(place.Pointer() + "the former content", CRecordPages::pointerFlag);
    } else {
        m_rows.Add(record);
    }
    ++m_rowCount;
    return *this;
}

std::string CAccessTable::Name(std::string_view name) const {
    const std::string bytes = m_pages.IsJet3() ? std::string(name) : Utf16Bytes(name);
    return LittleEndian(bytes.size(), m_pages.IsJet3() ? 1 : 2) + bytes;
}

std::string CAccessTable::ColumnEntry(std::size_t number, unsigned variableBefore, unsigned fixedOffset) const {
    const SAccessColumn& column = m_columns[number];
    const bool isJet3 = m_pages.IsJet3();
    const unsigned size = column.isCalculated               ? 39
                          : column.type == EAccess::Binary  ? 255
                          : column.type == EAccess::Text    ? (isJet3 ? 255 : 510)
                          : column.type == EAccess::Boolean ? 1
                                                            : column.FixedSize();
    const unsigned flags = column.type == EAccess::Complex ? 0x07 : column.IsInVariablePart() ? 0x02 : 0x03;
    const std::string place = LittleEndian(number, 2) + LittleEndian(variableBefore, 2) +
                              LittleEndian(column.position.value_or(static_cast<unsigned>(number)), 2);
    const std::string end = LittleEndian(fixedOffset, 2) + LittleEndian(size, 2);
    std::string facts = LittleEndian(0x409, 2) + LittleEndian(isJet3 ? 1252 : 0, 2); // order of texts, code page
    if (column.type == EAccess::Numeric)
        facts = isJet3 ? std::string("\x09\x04\x1A", 3) + static_cast<char>(column.scale)
                       : std::string(1, 26) + static_cast<char>(column.scale) + Zeros(2);
    if (column.type == EAccess::Complex)
        facts = LittleEndian(number + 1, 4);
    const std::string type = LittleEndian(static_cast<std::uint64_t>(column.shownType.value_or(column.type)), 1);
    if (isJet3)
        return type + place + LittleEndian(1, 2) + facts + static_cast<char>(flags) + end;
    const unsigned moreFlags = (column.isCalculated ? 0xC0U : 0U) | (column.isCompressed ? 1U : 0U);
    return type + LittleEndian(mark, 4) + place + facts + static_cast<char>(flags) + static_cast<char>(moreFlags) +
           Zeros(4) + end;
}

/// The columns, first to last, of one index over the first column, and its logical index with a name.
std::string CAccessTable::IndexEntries() const {
    std::string columns;
    for (int i = 0; i < 10; ++i)
        columns += i == 0 ? LittleEndian(0, 2) + '\1' : LittleEndian(0xFFFF, 2) + '\0';
    const std::string place = m_freeMap.Pointer() + LittleEndian(m_definitionPages[0], 4);
    const std::string related = Zeros(1) + LittleEndian(~0U, 4) + Zeros(4) + "\4\4\1";
    return m_pages.IsJet3() ? columns + place + '\x09' + Zeros(8) + related + Name("PrimaryKey")
                            : LittleEndian(indexMark, 4) + columns + place + '\x89' + Zeros(9) +
                                  LittleEndian(mark, 4) + Zeros(8) + related + Zeros(4) + Name("PrimaryKey");
}

/// The whole definition, with the header of its first page.
std::string CAccessTable::Definition() const {
    const bool isJet3 = m_pages.IsJet3();
    std::string entries, names, longColumns;
    unsigned variables = 0, fixedOffset = 0, shown = 0;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        const SAccessColumn& column = m_columns[i];
        if (!column.isDeleted) {
            entries += ColumnEntry(i, variables, fixedOffset);
            names += Name(column.strName);
            ++shown;
            if (column.IsLongValue())
                longColumns += LittleEndian(i, 2) + m_longMap.Pointer() + m_freeMap.Pointer();
        }
        if (column.IsInVariablePart())
            ++variables;
        else
            fixedOffset += column.FixedSize();
    }
    const unsigned indexes = m_options.hasIndex ? 1 : 0;
    std::string body =
        isJet3 ? LittleEndian(m_rowCount, 4) + Zeros(4)
               : LittleEndian(mark, 4) + LittleEndian(m_rowCount, 4) + Zeros(4) + LittleEndian(1, 4) + Zeros(12);
    body += m_options.isSystem ? '\x53' : '\x4E';
    body += LittleEndian(m_columns.size(), 2) + LittleEndian(variables, 2) + LittleEndian(shown, 2) +
            LittleEndian(indexes, 4) + LittleEndian(indexes, 4) + m_usedMap.Pointer() + m_freeMap.Pointer();
    if (m_options.hasIndex)
        body += Zeros(4) + LittleEndian(m_rowCount, 4) + Zeros(isJet3 ? 0 : 4);
    body += entries + names + (m_options.hasIndex ? IndexEntries() : "") + longColumns + "\xFF\xFF" + Zeros(8);
    return Zeros(pageHeader) + LittleEndian(body.size() + 4, 4) + body;
}

/// Each page has a header and continues the one before.
void CAccessTable::WriteDefinition() {
    const std::string whole = Definition();
    const std::size_t perPage = m_pages.Size() - pageHeader;
    for (std::size_t i = 0; i < m_definitionPages.size(); ++i) {
        const std::string part = whole.substr(pageHeader + i * perPage, perPage);
        const bool isLast = i + 1 == m_definitionPages.size();
        m_pages.Put(m_definitionPages[i], 0, 0x0102, 2);
        m_pages.Put(m_definitionPages[i], 2, m_pages.IsJet3() ? 0x4356 : perPage - part.size(), 2);
        m_pages.Put(m_definitionPages[i], 4, isLast ? 0 : m_definitionPages[i + 1], 4);
        m_pages.Put(m_definitionPages[i], pageHeader, part);
    }
}

/// A bit for each page: in the record itself, from a first page on, or on pages to which the record refers.
void CAccessTable::WriteMap(SRecordPlace place, std::vector<std::uint32_t> numbers) {
    if (numbers.empty())
        return;
    std::ranges::sort(numbers);
    const std::size_t inRecord = MapBytes(m_pages.IsJet3());
    const bool hasPages = m_options.hasMapPages || numbers.back() / 8 - numbers.front() / 8 >= inRecord;
    const std::uint32_t first = hasPages ? 0 : numbers.front() / 8 * 8;
    std::string bits(hasPages ? numbers.back() / 8 + 1 : inRecord, '\0');
    for (const std::uint32_t number : numbers)
        bits[(number - first) / 8] |= static_cast<char>(1 << number % 8);
    std::string record = '\0' + LittleEndian(first, 4) + bits;
    if (hasPages)
        record = '\1';
    const std::size_t perPage = m_pages.Size() - 4;
    for (std::size_t at = 0; hasPages && at < bits.size(); at += perPage) {
        const std::uint32_t page = m_pages.Add();
        m_pages.Put(page, 0, 0x0105, 2);
        m_pages.Put(page, 4, bits.substr(at, perPage));
        record += LittleEndian(page, 4);
    }
    m_maps.Put(place, 0, record);
}

void CAccessTable::Finish() {
    WriteDefinition();
    std::vector<std::uint32_t> used = m_rows.Numbers();
    used.insert(used.end(), m_moved.Numbers().begin(), m_moved.Numbers().end());
    WriteMap(m_usedMap, used);
    WriteMap(m_longMap, m_long.Numbers());
}

/// Twelve bytes with size and place; the content follows, or is in a record of a page, or in a chain of records that
/// each begin with a pointer to the next.
std::string CAccessTable::LongValue(const std::string& content) {
    using enum SAccessTableOptions::ELongValue;
    auto form = m_options.longValue;
    if (form == BySize)
        form = content.size() <= longestInRow ? InRow : content.size() <= m_long.MostBytes() ? OnePage : Chain;
    if (form == InRow)
        return LittleEndian(content.size() | 0x80000000U, 4) + Zeros(8) + content;
    if (form == OnePage)
        return LittleEndian(content.size() | 0x40000000U, 4) + m_long.Add(content).Pointer() + Zeros(4);
    const std::size_t piece = std::min(m_options.chainPiece, m_long.MostBytes() - 4);
    std::string pointer = Zeros(4);
    for (std::size_t pieces = (content.size() + piece - 1) / piece; pieces-- > 0;)
        pointer = m_long.Add(pointer + content.substr(pieces * piece, piece)).Pointer();
    return LittleEndian(content.size(), 4) + pointer + Zeros(4);
}

/// The count of columns, the values of fixed size, the others; where each of those begins, last to first, and their
/// count; a bit for each column that is not NULL. Offsets of Jet 3 have one byte: a table beside them tells the
/// columns at which another 256 bytes begin.
std::string CAccessTable::Record(const AccessRow& row, std::size_t columns) {
    const bool isJet3 = m_pages.IsJet3();
    const std::size_t width = isJet3 ? 1 : 2;
    if (row.size() != columns)
        throw std::logic_error("a row with another number of values");
    std::string fixed, variable, nulls((columns + 7) / 8, '\0');
    // The unused bits of the last byte have no meaning.
    if (columns % 8 != 0 && columns < m_columns.size())
        nulls.back() = static_cast<char>(0xFF << columns % 8);
    std::vector<std::size_t> offsets;
    for (std::size_t i = 0; i < columns; ++i) {
        const SAccessColumn& column = m_columns[i];
        const bool isNull = std::holds_alternative<std::monostate>(row[i]);
        const bool isBit = column.type == EAccess::Boolean && !column.isCalculated;
        if (!isNull && (!isBit || std::get<bool>(row[i])))
            nulls[i / 8] |= static_cast<char>(1 << i % 8);
        std::string bytes = isNull || isBit ? "" : AccessBytes(column, row[i], isJet3);
        if (!isNull && column.IsLongValue())
            bytes = LongValue(bytes);
        bytes.resize(column.IsInVariablePart() ? bytes.size() : column.FixedSize());
        if (column.IsInVariablePart())
            offsets.push_back(variable.size());
        (column.IsInVariablePart() ? variable : fixed) += bytes;
    }
    std::string record = LittleEndian(columns, width) + fixed;
    if (std::ranges::none_of(m_columns, &SAccessColumn::IsInVariablePart))
        return record + nulls;
    for (std::size_t& offset : offsets)
        offset += record.size();
    record += variable;
    offsets.push_back(record.size());
    for (auto offset = offsets.rbegin(); offset != offsets.rend(); ++offset)
        record += LittleEndian(*offset, width);
    if (isJet3) {
        std::size_t jumps = 0;
        while ((record.size() + jumps + 1 + nulls.size() - 1) / 256 > jumps)
            ++jumps;
        for (std::size_t jump = jumps; jump > 0; --jump) {
            const auto at = std::ranges::find_if(offsets, [&](std::size_t offset) { return offset >= jump * 256; });
            record += at == offsets.end() ? '\xFF' : static_cast<char>(at - offsets.begin());
        }
    }
    return record + LittleEndian(offsets.size() - 1, width) + nulls;
}

/// Page 0 is the header, page 1 the allocation of all pages, page 2 the definition of the catalogue.
CAccessWriter::CAccessWriter(EJet version) : m_pages(version), m_maps(m_pages, 0) {
    m_pages.Add();
    m_maps.Add(std::string(m_pages.IsJet3() ? 133 : 69, '\0'));
    MakeTable(CatalogueColumns(), {.isSystem = true});
    Catalogue(2, "MSysObjects", 1, systemFlag);
}

CAccessTable& CAccessWriter::MakeTable(std::vector<SAccessColumn> columns, SAccessTableOptions options) {
    m_tables.push_back(std::make_unique<CAccessTable>(m_pages, m_maps, std::move(columns), options));
    return *m_tables.back();
}

void CAccessWriter::Catalogue(std::int64_t id, const std::string& name, int type, std::int64_t flags) {
    AccessRow row = {id, tablesId, name, std::int64_t{type}, creationDate, creationDate, {}, flags};
    row.resize(CatalogueColumns().size());
    m_tables.front()->Add(row);
}

CAccessTable& CAccessWriter::AddTable(const std::string& name, std::vector<SAccessColumn> columns,
                                      SAccessTableOptions options, std::int64_t flags) {
    CAccessTable& table = MakeTable(std::move(columns), options);
    Catalogue(table.DefinitionPage(), name, 1, flags);
    return table;
}

void CAccessWriter::AddQuery(const std::string& name, const std::vector<SAccessQueryRow>& rows, std::int64_t flags) {
    if (m_pQueries == nullptr)
        m_pQueries = &AddTable("MSysQueries", QueryColumns(), {.isSystem = true}, systemFlag);
    std::int64_t order = 0;
    for (const SAccessQueryRow& row : rows)
        m_pQueries->Add({m_nextId,
                         std::int64_t{row.attribute},
                         LittleEndian(static_cast<unsigned>(order++), 4),
                         TextOrNull(row.strName1),
                         TextOrNull(row.strName2),
                         TextOrNull(row.strExpression),
                         row.flag ? AccessValue(*row.flag) : AccessValue(),
                         {}});
    AddObject(name, 5, flags);
}

/// The password of Jet 3 stands there as it is; that of Jet 4 is combined with the day of creation.
void CAccessWriter::WriteHeader() {
    const bool isAce = m_pages.Version() > EJet::Jet4;
    const std::size_t passWordBytes = m_pages.IsJet3() ? 20 : 40;
    m_pages.Put(0, 0, std::string_view("\0\1\0\0", 4));
    m_pages.Put(0, 4, isAce ? "Standard ACE DB" : "Standard Jet DB");
    m_pages.Put(0, 0x14, static_cast<std::uint64_t>(m_pages.Version()), 1);
    m_pages.Put(0, 0x18, 0x00000100, 4);
    m_pages.Put(0, 0x1C, 0x00000101, 4);
    m_pages.Put(0, m_pages.IsJet3() ? 0x3A : 0x6E, 0x0409, 2);
    m_pages.Put(0, 0x3C, m_uCodePage, 2);
    m_pages.Put(0, 0x3E, m_uKey, 4);
    std::string passWord = m_pages.IsJet3() ? m_strPassWord : Utf16Bytes(m_strPassWord);
    passWord.resize(passWordBytes);
    if (!m_pages.IsJet3()) {
        const std::string day = LittleEndian(static_cast<std::uint64_t>(creationDate), 4);
        for (std::size_t i = 0; i < passWord.size(); ++i)
            passWord[i] ^= day[i % 4];
        m_pages.Put(0, 0x72, std::bit_cast<std::uint64_t>(creationDate), 8);
    }
    m_pages.Put(0, 0x42, passWord);
    m_pages.Encrypt(0, 0x18, m_pages.IsJet3() ? 126 : 128, "\xC7\xDA\x39\x6B");
}

CAccessPages& CAccessWriter::Finish() {
    for (const auto& table : m_tables)
        table->Finish();
    WriteHeader();
    if (m_uKey != 0 && m_pages.Version() <= EJet::Jet4) {
        for (std::uint32_t page = 1; page < m_pages.Count(); ++page)
            m_pages.Encrypt(page, 0, m_pages.Size(), LittleEndian(m_uKey ^ page, 4));
    }
    return m_pages;
}

} // namespace NSTQ::Tests
