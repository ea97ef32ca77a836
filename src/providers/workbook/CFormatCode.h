// The code of a number format, such as "yyyy-mm-dd" or "[=0]0;[h]:mm", and what it makes of a number.
//
// Sections stand between ';'. One that has a '@' and shows no number is for texts and does not count here. Of the
// first three others each is for some numbers: those of its condition, which is written as "[<=100]"; without one the
// first is for those above zero (from zero on when there are two, all when it is alone), the second of three for
// those below zero (above it when the first is for lesser ones), and the last for what is left. A section that shows
// neither a number nor a date hides its numbers; they still come out, as the first section that shows anything has
// them.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace NSTQ::Providers {

enum class EDateKind : unsigned char {
    None,
    Date,    ///< with or without a time
    Time,    ///< the time of a day alone
    Elapsed, ///< hours, minutes or seconds that go on past a day
};

class CFormatCode {
public:
    explicit CFormatCode(std::string_view code);

    /// None also for a number that no section is for.
    EDateKind KindOf(double number) const;
    /// What KindOf gives for every number; nothing when it differs between numbers.
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
