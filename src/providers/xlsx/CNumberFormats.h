// Which cell formats show a number as a date or a time.
#pragma once

#include "providers/xlsx/CPackage.h"

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
    /// No format shows dates.
    CNumberFormats() = default;
    /// Reads the styles part. Throws CSourceError.
    CNumberFormats(const CPackage& package, const std::string& part);

    /// For the style number of a cell; None beyond the list.
    EDateKind GetKind(std::uint32_t style) const { return style < m_kinds.size() ? m_kinds[style] : EDateKind::None; }
    static EDateKind KindOfCode(std::string_view code);
    static EDateKind KindOfBuiltIn(std::uint32_t id);

private:
    static constexpr std::size_t maxFormats = 1U << 20;

    std::vector<EDateKind> m_kinds;
};

} // namespace NSTQ::Providers
