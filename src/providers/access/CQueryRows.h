// The rows that a saved query selects, streamed.
#pragma once

#include "providers/access/CSavedQueries.h"
#include "providers/access/CTableRows.h"

namespace NSTQ::Providers {

class CQueryRows : public Platform::IRowSource {
public:
    /// With conditions it reads the table once to count the rows. Throws CSourceError or _com_error; the operations
    /// below throw _com_error.
    CQueryRows(const std::shared_ptr<const CDatabase>& database, SQueryPlan plan);

    const std::vector<std::u16string>& GetColumnNames() const override { return m_names; }
    const std::vector<SFieldType>& GetColumnTypes() const override { return m_types; }
    std::int64_t GetRowCount() const override { return m_rowCount; }
    bool MoveNext() override { return MoveNext(m_rows); }
    const Platform::VARIANT& GetValue(std::size_t column) override {
        return m_rows.GetValue(m_plan.outputs[column].column);
    }
    Platform::SExactValue GetExactValue(std::size_t column) override {
        return m_rows.GetExactValue(m_plan.outputs[column].column);
    }
    void GetPlainTexts(std::span<std::string_view> texts, bool keepsLineEnds) override {
        m_rows.StartPlainTexts(keepsLineEnds);
        for (std::size_t i = 0; i < texts.size(); ++i)
            texts[i] = m_rows.GetPlainText(m_plan.outputs[i].column);
    }

private:
    bool MoveNext(CTableRows& rows) const;

    SQueryPlan m_plan;
    CTableRows m_rows;
    std::vector<std::u16string> m_names;
    std::vector<SFieldType> m_types;
    std::int64_t m_rowCount;
};

} // namespace NSTQ::Providers
