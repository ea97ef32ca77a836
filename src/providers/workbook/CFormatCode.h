// The code of a number format, such as "yyyy-mm-dd" or "[=0]0;[h]:mm", and how it displays a number.
//
// Sections are separated by ';'. One that has a '@' and displays no number is for texts and is ignored here. Each of
// the first three others applies to some numbers: those of its condition, such as "[<=100]"; without a condition the
// first applies to numbers above zero (from zero on if there are two, to all if it is the only one), the second of
// three to those below zero (above zero if the first has a condition for smaller ones), and the last to the rest. A
// section that displays neither a number nor a date hides its numbers; they are written nevertheless, by the first
// section that displays anything.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace NSTQ::Providers {

enum class EDateKind : unsigned char {
    None,
    Date,    ///< with or without a time
    Time,    ///< only a time of day
    Elapsed, ///< hours, minutes or seconds that exceed a day
};

class CFormatCode {
public:
    explicit CFormatCode(std::string_view code);

    /// None also for a number without a section.
    EDateKind KindOf(double number) const;
    /// The result of KindOf for every number; nothing when it differs between numbers.
    std::optional<EDateKind> CommonKind() const;

private:
    enum class EComparison : unsigned char {
        Open,
        Always,
        Less,
        LessOrEqual,
        Equal,
        NotEqual,
        Greater,
        GreaterOrEqual
    };
    struct SSection {
        double limit = 0;
        EComparison comparison = EComparison::Open; ///< Open until the defaults are filled in
        EDateKind kind = EDateKind::None;
    };
    struct SSigns;

    static std::size_t ReadElement(std::string_view code, SSigns& signs);
    static std::size_t ReadBracket(std::string_view code, SSigns& signs);
    static void ReadCondition(std::string_view condition, SSection& section);
    static bool Takes(const SSection& section, double number);
    void FillInConditions();

    std::array<SSection, 3> m_sections = {};
    std::size_t m_count = 0;
};

} // namespace NSTQ::Providers
