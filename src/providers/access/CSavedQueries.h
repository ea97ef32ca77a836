// The saved queries of a database, from its table MSysQueries, and which of them are supported: those that select
// columns of one table of the database, all or by name, with conditions that CQueryConditions understands.
#pragma once

#include "providers/access/CCatalogue.h"
#include "providers/access/CQueryConditions.h"

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace NSTQ::Providers {

/// How to run a query.
struct SQueryPlan {
    struct SOutput {
        std::u16string name;
        std::size_t column; ///< of the table
    };
    STableDefinition table;
    std::vector<SOutput> outputs;
    CQueryConditions conditions;
};

class CSavedQueries {
public:
    /// Throws CSourceError or _com_error when the queries cannot be read or take more than 32 MiB. `catalogue`
    /// outlives the object.
    CSavedQueries(std::shared_ptr<const CDatabase> database, const CCatalogue& catalogue);

    /// Nothing when the query is not supported.
    std::optional<SQueryPlan> MakePlan(const SDatabaseObject& query);

private:
    struct SRow {
        std::uint32_t id;
        std::uint32_t attribute;
        std::u16string order;
        std::uint32_t flag;
        std::u16string name1;
        std::u16string name2;
        std::u16string expression;
        std::uint32_t position; ///< in the file
    };
    struct SRows {
        std::deque<SRow>::const_iterator first;
        std::deque<SRow>::const_iterator last;
        auto begin() const { return first; }
        auto end() const { return last; }
    };

    SRows GetRows(std::uint32_t id) const;
    static bool IsPlainSelect(const SRows& rows);
    static bool TakeOutputs(const SRows& rows, const CColumnScope& scope, SQueryPlan& plan);
    static bool TakeOutput(const SRow& row, const CColumnScope& scope, SQueryPlan& plan);

    const STableDefinition& GetTable(const SDatabaseObject& table);

    const CCatalogue& m_catalogue;
    std::deque<SRow> m_rows; ///< by query, attribute and order; growing it takes no second copy
    /// A cache of definitions by their pages: many queries use few tables.
    std::map<std::uint32_t, STableDefinition> m_tables;
};

} // namespace NSTQ::Providers
