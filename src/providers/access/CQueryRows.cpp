#include "providers/access/CQueryRows.h"

namespace NSTQ::Providers {

CQueryRows::CQueryRows(const std::shared_ptr<const CDatabase>& database, SQueryPlan plan)
    : m_plan(std::move(plan)), m_rows(database, m_plan.table), m_rowCount(m_rows.GetRowCount()) {
    for (const SQueryPlan::SOutput& output : m_plan.outputs) {
        m_names.push_back(output.name);
        m_types.push_back(m_rows.GetColumnTypes()[output.column]);
    }
    if (m_plan.conditions.IsEmpty())
        return;
    CTableRows counted(database, m_plan.table);
    for (m_rowCount = 0; MoveNext(counted);)
        ++m_rowCount;
}

bool CQueryRows::MoveNext(CTableRows& rows) const {
    while (rows.MoveNext()) {
        if (m_plan.conditions.Hold(rows))
            return true;
    }
    return false;
}

} // namespace NSTQ::Providers
