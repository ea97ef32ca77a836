#include "CUniqueNames.h"

#include "AsciiCase.h"

#include <utility>

namespace NSTQ::Tool {
namespace {

/// Of the names that a note tells.
constexpr std::size_t shownMax = 5;

} // namespace

std::string CUniqueNames::KeyOf(std::string_view name) const {
    return m_ignoresCase ? ToAsciiLowerText(std::string(name)) : std::string(name);
}

std::string CUniqueNames::Take(std::string_view name) {
    ++m_count;
    const std::string base = name.empty() ? "F" + std::to_string(m_count) : std::string(name);
    std::string taken = base;
    auto [entry, isNew] = m_taken.try_emplace(KeyOf(base), 1);
    for (std::size_t& number = entry->second; !isNew;) {
        taken = base + '_' + std::to_string(++number);
        isNew = m_taken.try_emplace(KeyOf(taken), 1).second;
    }
    if (taken != name && ++m_changed <= shownMax)
        m_note += (m_note.empty() ? "" : ", ") + std::to_string(m_count) + " is \"" + taken + '"';
    return taken;
}

std::string CUniqueNames::TakeNote() {
    if (m_changed == 0)
        return {};
    std::string note = "columns without a name of their own were given one: " + std::exchange(m_note, "");
    if (m_changed > shownMax)
        note += " and " + std::to_string(m_changed - shownMax) + " more";
    m_changed = 0;
    return note;
}

} // namespace NSTQ::Tool
