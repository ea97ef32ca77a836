#include "CColumns.h"

#include "CFailure.h"

#include <algorithm>

namespace NSTQ::Tool {

bool CColumns::TakeNames(const std::string& file, const std::vector<std::string>& names) {
    if (!m_names) {
        m_file = file;
        m_names = names;
        return true;
    }
    TakeCount(file, static_cast<DWORD>(names.size()));
    const auto [mine, other] = std::mismatch(names.begin(), names.end(), m_names->begin(), m_names->end());
    if (mine != names.end())
        throw CFailure(EExitStatus::Unsupported, file,
                       "column " + std::to_string(mine - names.begin() + 1) + " is named \"" + *mine + "\", but in " +
                           m_file + " \"" + *other +
                           "\"; the inputs of one output need the same columns; try --out-dir");
    return false;
}

void CColumns::TakeCount(const std::string& file, DWORD count) {
    if (m_names)
        m_count = static_cast<DWORD>(m_names->size());
    if (!m_count) {
        m_file = file;
        m_count = count;
    }
    if (count != *m_count)
        throw CFailure(EExitStatus::Unsupported, file,
                       "the first row has " + std::to_string(count) + " fields, that of " + m_file + " has " +
                           std::to_string(*m_count) +
                           "; the inputs of one output need the same columns; try --out-dir");
}

} // namespace NSTQ::Tool
