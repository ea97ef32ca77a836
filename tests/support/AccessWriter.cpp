#include "support/AccessWriter.h"

#include <bit>

namespace NSTQ::Tests {
namespace {

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
