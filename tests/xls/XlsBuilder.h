// xls workbooks built in memory, valid or not.
#pragma once

#include "providers/xls/RecordTypes.h"
#include "providers/xls/Xls.h"
#include "support/Bytes.h"
#include "support/RowsText.h"

#include <bit>
#include <optional>
#include <vector>

namespace NSTQ::Tests {

using Providers::ERecord;

/// A little-endian number.
inline std::string Int(std::uint64_t number, std::size_t bytes = 2) {
    return LittleEndian(number, bytes);
}

inline std::string Double(double number) {
    return Int(std::bit_cast<std::uint64_t>(number), 8);
}

inline std::string Record(ERecord type, std::string_view body = {}) {
    return Int(static_cast<std::uint16_t>(type)) + Int(body.size()) + std::string(body);
}

/// Row and column count from 0.
inline std::string Cell(ERecord type, unsigned row, unsigned column, std::string_view value, unsigned style = 0) {
    return Record(type, Int(row) + Int(column) + Int(style) + std::string(value));
}

/// A text of two bytes (Wide) or one byte (Narrow) per character, after the byte that says which.
inline std::string Wide(std::u16string_view text) {
    std::string bytes = "\1";
    for (const char16_t unit : text)
        bytes += Int(unit);
    return bytes;
}
inline std::string Narrow(std::string_view text) {
    return std::string(1, '\0') + std::string(text);
}

inline std::string Number(unsigned row, unsigned column, double number, unsigned style = 0) {
    return Cell(ERecord::Number, row, column, Double(number), style);
}
inline std::string Label(unsigned row, unsigned column, std::string_view text) {
    return Cell(ERecord::Label, row, column, Int(text.size()) + Narrow(text));
}
inline std::string Label(unsigned row, unsigned column, std::u16string_view text) {
    return Cell(ERecord::Label, row, column, Int(text.size()) + Wide(text));
}

struct SXlsSheet {
    std::string strName = "Sheet1";
    std::string strCells;
    unsigned state = 0; ///< 1 hidden, 2 very hidden
    unsigned type = 0;  ///< 1 macros, 2 chart, 6 module
    std::optional<std::uint32_t> position = {};
    bool hasBegin = true;
};

/// A workbook with one sheet, "Sheet1", unless its parts are replaced.
struct SXlsParts {
    bool isBiff8 = true;
    std::string strGlobals; ///< records before the list of the sheets
    std::string strShared;  ///< records after it
    std::vector<SXlsSheet> sheets = {{}};

    std::string Begin(unsigned type) const {
        return Record(ERecord::Bof,
                      Int(isBiff8 ? 0x600 : 0x500) + Int(type) + Int(0, 4) + (isBiff8 ? Int(0, 8) : ""));
    }

    std::string Stream() const {
        std::string head = Begin(5) + strGlobals;
        std::size_t position = head.size() + strShared.size() + 4;
        for (const SXlsSheet& sheet : sheets)
            position += Entry(sheet, 0).size();
        std::string contents;
        for (const SXlsSheet& sheet : sheets) {
            head += Entry(sheet, sheet.position.value_or(static_cast<std::uint32_t>(position + contents.size())));
            contents += (sheet.hasBegin ? Begin(0x10) : "") + sheet.strCells + Record(ERecord::Eof);
        }
        return head + strShared + Record(ERecord::Eof) + contents;
    }

private:
    std::string Entry(const SXlsSheet& sheet, std::uint32_t position) const {
        return Record(ERecord::BoundSheet, Int(position, 4) + Int(sheet.state, 1) + Int(sheet.type, 1) +
                                               Int(sheet.strName.size(), 1) +
                                               (isBiff8 ? Narrow(sheet.strName) : sheet.strName));
    }
};

inline std::unique_ptr<Platform::IDataSource> OpenXlsBytes(std::string bytes, bool hasHeader = false,
                                                           const std::string& passWord = {}) {
    return Providers::OpenXls(Providers::CSourceInput(std::make_shared<CMemoryAccess>(std::move(bytes))),
                              {"book.xls", passWord, hasHeader});
}

/// The rows of a sheet that has these cells.
inline std::string XlsText(std::string_view cells, SXlsParts parts = {}) {
    parts.sheets[0].strCells = cells;
    return RowsText(*OpenXlsBytes(parts.Stream())->OpenTable(u"Sheet1$"));
}

} // namespace NSTQ::Tests
