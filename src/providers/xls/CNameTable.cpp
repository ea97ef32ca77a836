#include "providers/xls/CNameTable.h"

#include <algorithm>
#include <array>

namespace NSTQ::Providers {

namespace {

constexpr std::uint16_t hiddenFlag = 0x0001;
constexpr std::uint16_t builtInFlag = 0x0020;
constexpr std::size_t nameHeaderSize = 14;
/// Formulas of plain ranges are shorter.
constexpr std::size_t longestRange = 21;
/// Relative references have flags in the upper bits of rows (before Excel 97) or columns.
constexpr std::uint16_t gridBits = 0x3FFF;
constexpr std::uint32_t lastRow5 = 0x3FFF;
constexpr std::uint32_t lastRow8 = 0xFFFF;
constexpr std::uint32_t lastColumn = 0xFF;

constexpr std::array<std::u16string_view, 14> builtInNames = {
    u"Consolidate_Area", u"Auto_Open",       u"Auto_Close",   u"Extract",        u"Database",
    u"Criteria",         u"Print_Area",      u"Print_Titles", u"Recorder",       u"Data_Form",
    u"Auto_Activate",    u"Auto_Deactivate", u"Sheet_Title",  u"_FilterDatabase"};

/// Replaces the number of a built-in name by the name; empty for an unknown one.
void ReplaceBuiltIn(std::u16string& name) {
    const std::size_t number = name.size() == 1 ? name.front() : builtInNames.size();
    name = number < builtInNames.size() ? builtInNames[number] : std::u16string_view();
}

enum class EToken { Other, Cell, Area };

/// A reference to a cell or area of another sheet; its class does not matter.
EToken TokenOf(unsigned char byte) {
    if (byte < 0x20 || byte >= 0x80)
        return EToken::Other;
    return (byte & 0x1F) == 0x1A ? EToken::Cell : (byte & 0x1F) == 0x1B ? EToken::Area : EToken::Other;
}

/// Counts from 0; whole rows and columns are those of the largest grid.
SCellRange MakeRange(SCellPosition first, SCellPosition last, std::uint32_t lastRow) {
    SCellRange range = {{std::min(first.row, last.row) + 1, std::min(first.column, last.column) + 1},
                        {std::max(first.row, last.row) + 1, std::max(first.column, last.column) + 1}};
    if (range.first.row == 1 && range.last.row > lastRow)
        range.last.row = maxRow;
    if (range.first.column == 1 && range.last.column > lastColumn)
        range.last.column = maxColumn;
    return range;
}

} // namespace

void CNameTable::AddSupBook(CRecordReader& records) {
    constexpr std::uint16_t ownBook = 0x0401;
    const auto body = records.GetBody();
    m_isOwnBook.push_back(body.size() == 4 && ReadU16(body.data() + 2) == ownBook);
}

void CNameTable::AddExternSheet(CRecordReader& records, STextForm form) {
    // Before Excel 97 references to their own workbook contain the sheets.
    if (form.version == EBiff::Biff5)
        return;
    CTextReader reader(records, form, 0);
    for (std::size_t count = reader.TakeU16(); count > 0; --count) {
        const std::size_t book = reader.TakeU16();
        const std::uint16_t first = reader.TakeU16();
        m_externSheets.push_back({book, first, reader.TakeU16()});
    }
}

void CNameTable::AddName(CRecordReader& records, STextForm form) {
    const unsigned char* const body = records.Require(nameHeaderSize);
    const std::uint16_t flags = ReadU16(body);
    const std::size_t nameSize = body[3];
    const std::size_t formulaSize = ReadU16(body + 4);
    SName name = {};
    name.owner = ReadU16(body + 8);
    if ((flags & hiddenFlag) != 0 || formulaSize > longestRange)
        return;
    CTextReader reader(records, form, nameHeaderSize);
    reader.ReadText(nameSize, name.name);
    std::array<unsigned char, longestRange> formula = {};
    reader.TakeBytes(std::span(formula).first(formulaSize));
    if ((flags & builtInFlag) != 0)
        ReplaceBuiltIn(name.name);
    // '$' and '\'' distinguish sheets from ranges in a listing; no name of a range may contain them.
    if (name.name.empty() || name.name.find_first_of(u"$'") != std::u16string::npos)
        return;
    if (ParseRange(std::span(formula).first(formulaSize), form.version, name))
        m_names.push_back(std::move(name));
}

bool CNameTable::ParseRange(std::span<const unsigned char> formula, EBiff version, SName& name) {
    return version == EBiff::Biff8 ? ParseRange8(formula, name) : ParseRange5(formula, name);
}

bool CNameTable::ParseRange8(std::span<const unsigned char> formula, SName& name) {
    const EToken token = formula.empty() ? EToken::Other : TokenOf(formula[0]);
    const bool isArea = token == EToken::Area;
    if (token == EToken::Other || formula.size() != (isArea ? 11U : 7U))
        return false;
    const auto number = [&](std::size_t at) { return ReadU16(formula.data() + at); };
    const auto column = [&](std::size_t at) { return std::uint32_t{number(at)} & gridBits; };
    name.externSheet = number(1);
    const SCellPosition first = {number(3), column(isArea ? 7 : 5)};
    name.range = MakeRange(first, isArea ? SCellPosition{number(5), column(9)} : first, lastRow8);
    return true;
}

bool CNameTable::ParseRange5(std::span<const unsigned char> formula, SName& name) {
    const EToken token = formula.empty() ? EToken::Other : TokenOf(formula[0]);
    const bool isArea = token == EToken::Area;
    if (token == EToken::Other || formula.size() != (isArea ? 21U : 18U))
        return false;
    const auto number = [&](std::size_t at) { return ReadU16(formula.data() + at); };
    const auto row = [&](std::size_t at) { return std::uint32_t{number(at)} & gridBits; };
    // A negative number means this workbook.
    if (number(1) < 0x8000)
        return false;
    name.sheets = {0, number(11), number(13)};
    const SCellPosition first = {row(15), formula[isArea ? 19 : 17]};
    name.range = MakeRange(first, isArea ? SCellPosition{row(17), formula[20]} : first, lastRow5);
    return true;
}

std::size_t CNameTable::FindSheet(const SName& name, const std::vector<std::size_t>& tabs) const {
    SSheetRun sheets = name.sheets;
    if (name.externSheet) {
        if (*name.externSheet >= m_externSheets.size())
            return noSheet;
        sheets = m_externSheets[*name.externSheet];
        if (sheets.supBook >= m_isOwnBook.size() || !m_isOwnBook[sheets.supBook])
            return noSheet;
    }
    const bool isOne = sheets.firstTab == sheets.lastTab && sheets.firstTab < tabs.size();
    // A name of one sheet that refers to a range of another cannot be identified by the sheet before it.
    if (!isOne || (name.owner != 0 && name.owner != sheets.firstTab + std::size_t{1}))
        return noSheet;
    return tabs[sheets.firstTab];
}

std::vector<SNamedRange> CNameTable::Resolve(const std::vector<std::size_t>& tabs) const {
    std::vector<SNamedRange> ranges;
    for (const SName& name : m_names) {
        const std::size_t sheet = FindSheet(name, tabs);
        if (sheet != noSheet)
            ranges.push_back({name.name, name.owner != 0, sheet, name.range});
    }
    return ranges;
}

} // namespace NSTQ::Providers
