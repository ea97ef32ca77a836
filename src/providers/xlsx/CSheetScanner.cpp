#include "providers/xlsx/CSheetScanner.h"

#include "providers/common/CSourceError.h"
#include "providers/xlsx/SCPlainCell.h"
#include "providers/xlsx/SharedParts.h"

#include <charconv>

namespace NSTQ::Providers {

namespace {

constexpr std::size_t dataDepth = 2;
constexpr std::size_t rowDepth = 3;
constexpr std::size_t cellDepth = 4;

std::string_view Trim(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    while (!text.empty() && blanks.find(text.front()) != std::string_view::npos)
        text.remove_prefix(1);
    while (!text.empty() && blanks.find(text.back()) != std::string_view::npos)
        text.remove_suffix(1);
    return text;
}

} // namespace

bool CSheetScanner::Next(SCell& cell) {
    if (m_next < m_count) {
        cell = m_cells[m_next++];
        return true;
    }
    for (;;) {
        if (m_isInRow && m_xml.GetOpenCount() == rowDepth && TakePlainCell(cell))
            return true;
        switch (m_xml.Next()) {
        case EXmlEvent::Start:
            if (m_isInRow && m_xml.GetDepth() == cellDepth && m_xml.GetName() == "c") {
                if (ReadCell(cell))
                    return true;
            } else {
                EnterElement();
            }
            break;
        case EXmlEvent::EndOfDocument:
            return false;
        case EXmlEvent::End:
        case EXmlEvent::Text:
            break;
        }
    }
}

bool CSheetScanner::TakePlainCell(SCell& cell) {
    for (;;) {
        if (TakeCells(m_xml.GetAhead(), cell))
            return true;
        cell.position = m_position;
        const std::size_t size = SCPlainCell::Parse(m_xml.GetAhead(), cell);
        if (size == 0)
            return false;
        m_forms.Learn(m_xml.GetAhead().substr(0, size), cell);
        m_xml.TakeAhead(size);
        m_position = cell.position;
        if (cell.text.data() != nullptr)
            return true;
    }
}

/// Cells in the form of those above. False when none of them has a value.
bool CSheetScanner::TakeCells(std::string_view ahead, SCell& cell) {
    static_assert(CCellForms::readSlack <= CXmlScanner::readSlack);
    const CCellForms::SRead read = m_forms.Read(ahead, m_cells);
    if (read.size == 0)
        return false;
    m_xml.TakeAhead(read.size);
    m_position = read.position;
    m_count = read.count;
    m_next = 1;
    cell = m_cells[0];
    return m_count > 0;
}

void CSheetScanner::EnterElement() {
    const std::size_t depth = m_xml.GetDepth();
    if (depth == 1 && m_xml.GetName() != "worksheet")
        m_xml.Fail("not a worksheet but a " + PrintableName(m_xml.GetName()));
    if (depth == dataDepth)
        m_isInData = m_xml.GetName() == "sheetData";
    if (depth <= rowDepth)
        m_isInRow = m_isInData && depth == rowDepth && m_xml.GetName() == "row";
    if (m_isInRow && depth == rowDepth)
        BeginRow();
}

void CSheetScanner::BeginRow() {
    const std::string_view number = m_xml.GetAttribute("r");
    m_position.column = 0;
    ++m_position.row;
    if (!number.empty()) {
        const auto parsed = std::from_chars(number.data(), number.data() + number.size(), m_position.row);
        if (parsed.ec != std::errc() || parsed.ptr != number.data() + number.size())
            m_position.row = 0;
    }
    if (m_position.row == 0 || m_position.row > maxRow)
        m_xml.Fail("a row outside the grid: " +
                   (number.empty() ? std::to_string(m_position.row) : PrintableName(number)));
    m_forms.BeginRow(m_position.row, GetRowTagEnd());
}

/// The bytes of the start tag behind its number, when that is the first attribute in its usual form.
std::string_view CSheetScanner::GetRowTagEnd() const {
    constexpr std::string_view rowBegin = "<row r=\"";
    const std::span<const SXmlAttribute> attributes = m_xml.GetAttributes();
    if (attributes.empty() || attributes[0].name != "r" || attributes[0].value.starts_with('0'))
        return {};
    // The tag has at least as many bytes before the value.
    const std::string_view value = attributes[0].value;
    if (std::string_view(value.data() - rowBegin.size(), rowBegin.size()) != rowBegin)
        return {};
    const char* const begin = value.data() + value.size();
    const std::string_view end(begin, m_xml.GetAhead().data());
    return end.ends_with("/>") ? std::string_view() : end;
}

bool CSheetScanner::ReadCell(SCell& cell) {
    ReadCellAttributes(cell);
    cell.position = m_position;
    if (!ReadCellContent(cell))
        return false;
    cell.text = m_text;
    if (cell.kind != ECellKind::Text)
        cell.text = Trim(cell.text);
    return cell.kind == ECellKind::Text || !cell.text.empty();
}

void CSheetScanner::ReadCellAttributes(SCell& cell) {
    std::string_view reference;
    cell.kind = ECellKind::NumberDigits;
    cell.style = 0;
    for (const SXmlAttribute& attribute : m_xml.GetAttributes()) {
        if (attribute.name.size() != 1)
            continue;
        if (attribute.name[0] == 'r')
            reference = attribute.value;
        else if (attribute.name[0] == 's')
            cell.style = ParseStyle(attribute.value);
        else if (attribute.name[0] == 't')
            cell.kind = KindOfType(attribute.value);
    }
    SetPosition(reference);
}

void CSheetScanner::SetPosition(std::string_view reference) {
    if (reference.empty() || reference == "0" || reference == "1") {
        if (++m_position.column > maxColumn)
            m_xml.Fail("a cell outside the grid, in row " + std::to_string(m_position.row));
        return;
    }
    const std::optional<SCellPosition> position = SCCellReference::ParseCell(reference);
    if (!position)
        m_xml.Fail("a cell outside the grid: " + PrintableName(reference));
    m_position = *position;
}

std::uint32_t CSheetScanner::ParseStyle(std::string_view text) const {
    std::uint32_t style = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), style);
    if (parsed.ec != std::errc() && !text.empty())
        m_xml.Fail("an invalid cell style: " + PrintableName(text));
    return style;
}

/// Goes to the End of the cell. False when it has no content. Of repeated values the last one counts.
bool CSheetScanner::ReadCellContent(SCell& cell) {
    bool hasContent = false;
    m_text.clear();
    while (!(m_xml.Next() == EXmlEvent::End && m_xml.GetDepth() == cellDepth)) {
        if (m_xml.GetEvent() != EXmlEvent::Start)
            continue;
        const bool isRich = m_xml.GetName() == "is";
        if (!isRich && m_xml.GetName() != "v") {
            m_xml.SkipElement();
            continue;
        }
        hasContent = true;
        m_text.clear();
        if (!isRich) {
            m_xml.ReadElementText(m_text);
            continue;
        }
        ReadRichText(m_xml, m_text);
        cell.kind = ECellKind::Text;
    }
    return hasContent;
}

} // namespace NSTQ::Providers
