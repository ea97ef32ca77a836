// Which cell formats show a number as a date or a time.
#pragma once

#include "providers/workbook/CFormatCode.h"

#include <cstdint>
#include <map>
#include <vector>

namespace NSTQ::Providers {

class CNumberFormats {
public:
    static constexpr std::size_t maxFormats = 1U << 20;
    /// The maximum of formats whose kind depends on the number.
    static constexpr std::size_t maxVarying = 1U << 16;

    /// A format that the workbook defines itself. Throws CSourceError beyond `maxFormats` or `maxVarying` of them.
    void AddCode(std::uint32_t id, std::string_view code);
    /// The next style: it uses the format of that number, which must have been added before, unless it is built-in.
    /// Throws CSourceError beyond `maxFormats` styles.
    void AddStyle(std::uint32_t formatId);

    /// What a number in a cell of that style is; None for a style beyond the list.
    EDateKind GetKind(std::uint32_t style, double number) const {
        if (style >= m_styles.size())
            return EDateKind::None;
        const SFormat& format = m_styles[style];
        return format.isVarying ? m_varying[format.index].KindOf(number) : format.kind;
    }
    /// The result of GetKind for every number; nothing when it differs between numbers.
    std::optional<EDateKind> GetCommonKind(std::uint32_t style) const {
        if (style >= m_styles.size())
            return EDateKind::None;
        return m_styles[style].isVarying ? std::nullopt : std::optional(m_styles[style].kind);
    }
    static EDateKind KindOfBuiltIn(std::uint32_t id);

private:
    struct SFormat {
        EDateKind kind = EDateKind::None;
        bool isVarying = false; ///< `index` selects one of m_varying, instead of `kind`
        std::uint32_t index = 0;
    };

    std::map<std::uint32_t, SFormat> m_codes; ///< not hashed: a file could be made so that all of them collide
    std::vector<SFormat> m_styles;
    std::vector<CFormatCode> m_varying;
};

} // namespace NSTQ::Providers
