// Which cell formats show a number as a date or a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

namespace NSTQ::Providers {

enum class EDateKind : unsigned char {
    None,
    Date,    ///< with or without a time
    Time,    ///< the time of a day alone
    Elapsed, ///< hours, minutes or seconds that go on past a day
};

class CNumberFormats {
public:
    static constexpr std::size_t maxFormats = 1U << 20;

    /// A format that the workbook defines itself. Throws CSourceError beyond `maxFormats` of them.
    void AddCode(std::uint32_t id, std::string_view code);
    /// The next style: it uses the format of that number, which has been added before unless it is a fixed one.
    /// Throws CSourceError beyond `maxFormats` styles.
    void AddStyle(std::uint32_t formatId);

    /// For the style number of a cell; None beyond the list.
    EDateKind GetKind(std::uint32_t style) const { return style < m_kinds.size() ? m_kinds[style] : EDateKind::None; }
    static EDateKind KindOfCode(std::string_view code);
    static EDateKind KindOfBuiltIn(std::uint32_t id);

private:
    std::map<std::uint32_t, EDateKind> m_codes; ///< no table of hashes, for which a file could choose colliding ids
    std::vector<EDateKind> m_kinds;
};

} // namespace NSTQ::Providers
