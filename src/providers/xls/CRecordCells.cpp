#include "providers/xls/CRecordCells.h"

#include "providers/common/CSourceError.h"

#include <bit>

namespace NSTQ::Providers {

namespace {

constexpr std::uint16_t worksheet = 0x0010;
constexpr std::uint32_t columnCount = 256;
constexpr std::size_t placeSize = 6;    ///< row, column and style
constexpr std::size_t oldPlaceSize = 7; ///< the same in the form of Excel 2.x
constexpr std::size_t runCellSize = 6;

/// An RK number of 30 bits: the upper bits of a double, or an integer, either optionally times 100.
double NumberOfRk(std::uint32_t rk) {
    const double number = (rk & 2) != 0 ? static_cast<double>(static_cast<std::int32_t>(rk) >> 2)
                                        : std::bit_cast<double>(std::uint64_t{rk & ~std::uint32_t{3}} << 32);
    return (rk & 1) != 0 ? number / 100 : number;
}

double ReadDouble(const unsigned char* bytes) {
    return std::bit_cast<double>(ReadU64(bytes));
}

std::string_view ErrorText(unsigned char code) {
    switch (code) {
    case 0x00:
        return "#NULL!";
    case 0x07:
        return "#DIV/0!";
    case 0x0F:
        return "#VALUE!";
    case 0x17:
        return "#REF!";
    case 0x1D:
        return "#NAME?";
    case 0x24:
        return "#NUM!";
    case 0x2A:
        return "#N/A";
    case 0x2B:
        return "#GETTING_DATA";
    default:
        return "#UNKNOWN!";
    }
}

} // namespace

CRecordCells::CRecordCells(CRecordReader records, STextForm form, bool isBehindEnd)
    : m_records(std::move(records)), m_form(form) {
    const bool isThere = m_records.Next();
    m_isAhead = isThere && isBehindEnd && m_records.GetType() != ERecord::Bof;
    if (!isThere ||
        (!m_isAhead && (m_records.GetType() != ERecord::Bof || ReadU16(m_records.Require(4) + 2) != worksheet)))
        throw CSourceError("there is no worksheet at the position that the workbook states");
}

bool CRecordCells::Next(SCell& cell) {
    while (!m_isAtEnd) {
        if (!m_run.empty()) {
            TakeFromRun(cell);
            return true;
        }
        if (!m_isAhead && !m_records.Next())
            throw CSourceError("the stream of the workbook ends within a sheet");
        m_isAhead = false;
        if (ReadRecord(cell))
            return true;
    }
    return false;
}

/// False when the record contains no cell, or several cells.
bool CRecordCells::ReadRecord(SCell& cell) {
    switch (m_records.GetType()) {
    case ERecord::Number:
        SetNumber(ReadDouble(TakePlace(8, cell)), cell);
        return true;
    case ERecord::Rk:
        SetNumber(NumberOfRk(ReadU32(TakePlace(4, cell))), cell);
        return true;
    case ERecord::LabelSst:
        cell.index = ReadU32(TakePlace(4, cell));
        cell.kind = ECellKind::Shared;
        return true;
    case ERecord::MulRk:
        BeginRun();
        return false;
    case ERecord::Label:
    case ERecord::RString:
        ReadLabel(placeSize + 2, ReadU16(TakePlace(2, cell)), cell);
        return true;
    case ERecord::BoolErr:
        SetBoolOrError(TakePlace(2, cell), cell);
        return true;
    case ERecord::Formula:
    case ERecord::Formula3:
    case ERecord::Formula4:
        ReadFormula(cell);
        return true;
    case ERecord::Bof:
        SkipInnerSheet();
        return false;
    case ERecord::Eof:
        m_isAtEnd = true;
        return false;
    default:
        return ReadOldRecord(cell);
    }
}

bool CRecordCells::ReadOldRecord(SCell& cell) {
    switch (m_records.GetType()) {
    case ERecord::Integer2:
        SetNumber(ReadU16(TakeOldPlace(2, cell)), cell);
        return true;
    case ERecord::Number2:
        SetNumber(ReadDouble(TakeOldPlace(8, cell)), cell);
        return true;
    case ERecord::Label2:
        ReadLabel(oldPlaceSize + 1, *TakeOldPlace(1, cell), cell);
        return true;
    case ERecord::BoolErr2:
        SetBoolOrError(TakeOldPlace(2, cell), cell);
        return true;
    default:
        return false;
    }
}

/// The bytes after the position, at least as many as stated.
const unsigned char* CRecordCells::TakePlace(std::size_t valueSize, SCell& cell) const {
    const unsigned char* const body = m_records.Require(placeSize + valueSize);
    SetPosition(ReadU16(body) + 1U, ReadU16(body + 2), cell);
    cell.style = ReadU16(body + 4);
    return body + placeSize;
}

/// The same for the form of Excel 2.x.
const unsigned char* CRecordCells::TakeOldPlace(std::size_t valueSize, SCell& cell) const {
    constexpr unsigned char styleBits = 0x3F;
    const unsigned char* const body = m_records.Require(oldPlaceSize + valueSize);
    SetPosition(ReadU16(body) + 1U, ReadU16(body + 2), cell);
    cell.style = body[4] & styleBits;
    return body + oldPlaceSize;
}

/// `row` counts from 1, `column` from 0.
void CRecordCells::SetPosition(std::uint32_t row, std::uint32_t column, SCell& cell) const {
    if (column >= columnCount)
        Fail("contains a cell outside the grid");
    cell.position = {row, column + 1};
    cell.text = {};
}

void CRecordCells::SetNumber(double number, SCell& cell) {
    cell.kind = ECellKind::Number;
    cell.number = number;
}

void CRecordCells::BeginRun() {
    constexpr std::size_t headerSize = 4;
    constexpr std::size_t tailSize = 2;
    const unsigned char* const body = m_records.Require(headerSize + tailSize);
    m_row = ReadU16(body) + 1U;
    m_column = ReadU16(body + 2);
    const std::size_t size = m_records.GetBody().size() - headerSize - tailSize;
    m_run = m_records.GetBody().subspan(headerSize, size - size % runCellSize);
}

void CRecordCells::TakeFromRun(SCell& cell) {
    SetPosition(m_row, m_column++, cell);
    cell.style = ReadU16(m_run.data());
    SetNumber(NumberOfRk(ReadU32(m_run.data() + 2)), cell);
    m_run = m_run.subspan(runCellSize);
}

void CRecordCells::ReadLabel(std::size_t headerSize, std::size_t count, SCell& cell) {
    m_text.clear();
    ReadText(headerSize, count);
    SetWideText(cell);
}

/// An empty text may even lack the byte with the form of its characters.
void CRecordCells::ReadText(std::size_t headerSize, std::size_t count) {
    if (count > 0)
        CTextReader(m_records, m_form, headerSize).ReadText(count, m_text);
}

void CRecordCells::SetWideText(SCell& cell) const {
    cell.kind = ECellKind::WideText;
    cell.text = {reinterpret_cast<const char*>(m_text.data()), m_text.size() * sizeof(char16_t)};
}

/// A value, followed by whether it is an error.
void CRecordCells::SetBoolOrError(const unsigned char* bytes, SCell& cell) {
    const bool isError = bytes[1] != 0;
    cell.kind = isError ? ECellKind::Error : ECellKind::Boolean;
    cell.text = isError ? ErrorText(bytes[0]) : bytes[0] != 0 ? "1" : "0";
}

/// The result is a number, or a NaN pattern that states another type.
void CRecordCells::ReadFormula(SCell& cell) {
    enum : unsigned char { Text = 0, Boolean = 1, Error = 2 };
    const unsigned char* const result = TakePlace(8, cell);
    if (ReadU16(result + 6) != 0xFFFF) {
        SetNumber(ReadDouble(result), cell);
    } else if (result[0] == Boolean || result[0] == Error) {
        const unsigned char boolOrError[] = {result[2], result[0] == Error};
        SetBoolOrError(boolOrError, cell);
    } else {
        m_text.clear();
        if (result[0] == Text)
            ReadFormulaText();
        SetWideText(cell);
    }
}

/// The text is in a record of its own, soon after that of the formula.
void CRecordCells::ReadFormulaText() {
    while (m_records.Next()) {
        switch (m_records.GetType()) {
        case ERecord::String:
            ReadText(2, ReadU16(m_records.Require(2)));
            return;
        case ERecord::String2:
            ReadText(1, *m_records.Require(1));
            return;
        case ERecord::Array:
        case ERecord::Array2:
        case ERecord::SharedFormula:
        case ERecord::SharedFormula5:
        case ERecord::Table:
        case ERecord::Table2:
        case ERecord::Continue:
            break;
        default:
            m_isAhead = true;
            return;
        }
    }
}

void CRecordCells::SkipInnerSheet() {
    for (std::size_t depth = 1; depth > 0;) {
        if (!m_records.Next())
            throw CSourceError("the stream of the workbook ends within a chart of a sheet");
        if (m_records.GetType() == ERecord::Bof)
            ++depth;
        else if (m_records.GetType() == ERecord::Eof)
            --depth;
    }
}

void CRecordCells::Fail(const char* what) const {
    throw CSourceError("the record at byte " + std::to_string(m_records.GetPosition()) + " " + what);
}

} // namespace NSTQ::Providers
