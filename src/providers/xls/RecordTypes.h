// The records of a workbook's stream that are read, by their numbers. All others are skipped.
#pragma once

#include <cstdint>

namespace NSTQ::Providers {

/// The version, from the beginning of the stream. Excel 5.0 and 95 write the same records; so do 97 to 2003.
enum class EBiff : unsigned char { Biff5, Biff8 };

enum class ERecord : std::uint16_t {
    // Begin and end of a workbook or sheet. The first three are those of versions before 5.0.
    Bof2 = 0x0009,
    Bof3 = 0x0209,
    Bof4 = 0x0409,
    Bof = 0x0809,
    Eof = 0x000A,
    Continue = 0x003C,
    // Data that the sheets share.
    FilePass = 0x002F,
    CodePage = 0x0042,
    DateMode = 0x0022,
    BoundSheet = 0x0085,
    Format = 0x041E,
    Xf = 0x00E0,
    Sst = 0x00FC,
    ExternSheet = 0x0017,
    SupBook = 0x01AE,
    Name = 0x0018,
    // Cells. Blank cells have no value and are not included.
    Number = 0x0203,
    Rk = 0x027E,
    MulRk = 0x00BD,
    LabelSst = 0x00FD,
    Label = 0x0204,
    RString = 0x00D6,
    BoolErr = 0x0205,
    Formula = 0x0006,
    Formula3 = 0x0206,
    Formula4 = 0x0406,
    String = 0x0207,
    // Cells as Excel 2.x wrote them; other programs put them into later files.
    Integer2 = 0x0002,
    Number2 = 0x0003,
    Label2 = 0x0004,
    BoolErr2 = 0x0005,
    String2 = 0x0007,
    // Records between a formula and its text result.
    Array2 = 0x0021,
    Array = 0x0221,
    SharedFormula = 0x04BC,
    SharedFormula5 = 0x00BC,
    Table2 = 0x0036,
    Table = 0x0236,
    // Records that are not encrypted in an encrypted workbook, in addition to BOF, EOF and FilePass.
    InterfaceHeader = 0x00E1,
    UserExclusive = 0x0194,
    FileLock = 0x0195,
    RevisionInfo = 0x0196,
    RevisionHead = 0x0138,
};

} // namespace NSTQ::Providers
