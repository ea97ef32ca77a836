#include "providers/access/STableDefinition.h"

#include "providers/access/CPageReader.h"
#include "providers/common/CByteReader.h"
#include "providers/common/CSourceError.h"

#include <algorithm>

namespace NSTQ::Providers {

namespace {

constexpr std::size_t nextPageAt = 4;
constexpr std::size_t pageHeader = 8;
/// Far more than 255 columns and 32 indexes with the longest names need.
constexpr std::size_t maxDefinition = 1U << 20;
constexpr unsigned char fixedFlag = 0x01;
constexpr unsigned char calculatedFlags = 0xC0;

class CDefinitionReader {
public:
    CDefinitionReader(const CDatabase& database, std::uint32_t page) : m_database(database), m_page(page) {
        CPageReader reader(database, 1);
        std::uint32_t next = page;
        do {
            const auto bytes = reader.GetPage(next, EPageType::Definition);
            if (m_bytes.size() > maxDefinition)
                Throw("is too long");
            m_bytes.insert(m_bytes.end(), bytes.begin() + (m_bytes.empty() ? 0 : pageHeader), bytes.end());
            next = ReadU32(bytes.data() + nextPageAt);
        } while (next != 0);
    }

    STableDefinition Read() {
        const SJetFormat& format = m_database.GetFormat();
        STableDefinition table = {m_page, ReadU32(At(format.rowCountAt)), ReadU16(At(format.maxColumnsAt)),
                                  SRowAddress::FromPointer(ReadU32(At(format.usedPagesAt))), ReadColumns()};
        return table;
    }

private:
    [[noreturn]] void Throw(const char* what) const {
        throw CSourceError("the table definition at page " + std::to_string(m_page) + ' ' + what);
    }

    const unsigned char* At(std::size_t offset) const { return m_bytes.data() + offset; }

    std::vector<SColumn> ReadColumns() {
        const SJetFormat& format = m_database.GetFormat();
        const std::size_t count = ReadU16(At(format.columnCountAt));
        const std::uint64_t first =
            format.indexesAt + std::uint64_t{ReadU32(At(format.indexCountAt))} * format.indexSize;
        const std::uint64_t names = first + count * format.columnSize;
        if (names > m_bytes.size())
            Throw("ends inside its columns");
        std::vector<SColumn> columns;
        columns.reserve(count);
        m_nameAt = static_cast<std::size_t>(names);
        for (std::size_t i = 0; i < count; ++i)
            columns.push_back(ReadColumn(At(static_cast<std::size_t>(first) + i * format.columnSize)));
        std::ranges::stable_sort(columns, {}, &SColumn::position);
        return columns;
    }

    SColumn ReadColumn(const unsigned char* descriptor) {
        const SJetFormat& format = m_database.GetFormat();
        const unsigned char extraFlags = format.extraFlagsAt == 0 ? 0 : descriptor[format.extraFlagsAt];
        SColumn column = {};
        column.name = ReadName();
        column.type = static_cast<EColumnType>(descriptor[0]);
        column.number = ReadU16(descriptor + format.numberAt);
        column.isVariable = (descriptor[format.flagsAt] & fixedFlag) == 0;
        column.isCalculated = (extraFlags & calculatedFlags) != 0;
        column.variableIndex = ReadU16(descriptor + format.variableIndexAt);
        column.fixedOffset = ReadU16(descriptor + format.fixedOffsetAt);
        column.position = ReadU16(descriptor + format.positionAt);
        column.length = ReadU16(descriptor + format.lengthAt);
        column.precision = descriptor[format.precisionAt];
        column.scale = descriptor[format.scaleAt];
        return column;
    }

    std::span<const unsigned char> TakeBytes(std::size_t count) {
        if (count > m_bytes.size() - m_nameAt)
            Throw("ends inside its columns' names");
        const auto bytes = std::span(m_bytes).subspan(m_nameAt, count);
        m_nameAt += count;
        return bytes;
    }

    std::u16string ReadName() {
        const auto size = TakeBytes(m_database.GetFormat().nameLengthSize);
        m_database.DecodeText(TakeBytes(size.size() == 1 ? size[0] : ReadU16(size.data())), m_name);
        return std::u16string(m_name.View());
    }

    const CDatabase& m_database;
    std::uint32_t m_page;
    std::vector<unsigned char> m_bytes; ///< all pages, without the headers of the second and later ones
    std::size_t m_nameAt = 0;
    Platform::CBstr m_name;
};

} // namespace

STableDefinition ReadTableDefinition(const CDatabase& database, std::uint32_t page) {
    return CDefinitionReader(database, page).Read();
}

} // namespace NSTQ::Providers
