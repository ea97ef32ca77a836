// The conditions of a saved query, as far as they are supported: comparisons of columns with numbers, texts and
// dates, IS NULL and BETWEEN, all joined by AND.
//
// Text comparisons ignore case. LIKE is not supported on purpose: whether its wildcards are * and ? or % and _
// depends on how a query is run.
#pragma once

#include "platform/ado/Provider.h"
#include "providers/access/STableDefinition.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Providers {

enum class EComparison { Equal, NotEqual, Less, LessOrEqual, Greater, GreaterOrEqual, IsNull, IsNotNull };

/// The index of the column of a name, which may be preceded by the name of the table.
/// Nothing when there is no such column.
class CColumnScope {
public:
    /// `tables` are the names by which the table may be called. Both outlive the object.
    CColumnScope(const std::vector<SColumn>& columns, const std::vector<std::u16string>& tables)
        : m_columns(columns), m_tables(tables) {}

    bool IsTable(std::u16string_view name) const;
    std::optional<std::size_t> Find(std::u16string_view name) const;
    const SColumn& operator[](std::size_t column) const { return m_columns[column]; }
    std::size_t GetCount() const { return m_columns.size(); }

private:
    const std::vector<SColumn>& m_columns;
    const std::vector<std::u16string>& m_tables;
};

class CQueryConditions {
public:
    /// No conditions.
    CQueryConditions() = default;
    /// Reads the condition `text` over the columns of `scope`. Nothing when it contains something
    /// unsupported.
    static std::optional<CQueryConditions> Parse(std::u16string_view text, const CColumnScope& scope);

    bool IsEmpty() const { return m_conditions.empty(); }
    /// Whether the current row fulfils all conditions. Throws what the row source throws.
    bool Hold(Platform::IRowSource& rows) const;

    struct SCondition {
        std::size_t column;
        EComparison comparison;
        std::u16string text; ///< what a text is compared with
        double number;       ///< what a number is compared with, for dates a number of seconds
    };

private:
    std::vector<SCondition> m_conditions;
};

} // namespace NSTQ::Providers
