#include "providers/workbook/CNumberFormats.h"

#include "providers/common/CSourceError.h"

namespace NSTQ::Providers {

namespace {

struct SBuiltIn {
    std::uint32_t first;
    std::uint32_t last;
    EDateKind kind;
};
/// The built-in formats of all languages; those from 27 on differ between languages in form but not in kind.
constexpr SBuiltIn builtIns[] = {
    {14, 17, EDateKind::Date}, {18, 21, EDateKind::Time}, {22, 22, EDateKind::Date},    {27, 31, EDateKind::Date},
    {32, 33, EDateKind::Time}, {34, 36, EDateKind::Date}, {45, 45, EDateKind::Time},    {46, 46, EDateKind::Elapsed},
    {47, 47, EDateKind::Time}, {50, 58, EDateKind::Date}, {71, 74, EDateKind::Date},    {75, 76, EDateKind::Time},
    {77, 77, EDateKind::Date}, {78, 78, EDateKind::Time}, {79, 79, EDateKind::Elapsed}, {80, 80, EDateKind::Time},
    {81, 81, EDateKind::Date},
};

} // namespace

EDateKind CNumberFormats::KindOfBuiltIn(std::uint32_t id) {
    for (const SBuiltIn& builtIn : builtIns) {
        if (id >= builtIn.first && id <= builtIn.last)
            return builtIn.kind;
    }
    return EDateKind::None;
}

void CNumberFormats::AddCode(std::uint32_t id, std::string_view code) {
    const CFormatCode format(code);
    const std::optional<EDateKind> kind = format.CommonKind();
    if (m_codes.size() == maxFormats || (!kind && m_varying.size() == maxVarying))
        throw CSourceError("too many cell formats");
    m_codes[id] = {kind.value_or(EDateKind::None), !kind, static_cast<std::uint32_t>(m_varying.size())};
    if (!kind)
        m_varying.push_back(format);
}

void CNumberFormats::AddStyle(std::uint32_t formatId) {
    if (m_styles.size() == maxFormats)
        throw CSourceError("too many cell formats");
    const auto own = m_codes.find(formatId);
    m_styles.push_back(own == m_codes.end() ? SFormat{KindOfBuiltIn(formatId)} : own->second);
}

} // namespace NSTQ::Providers
