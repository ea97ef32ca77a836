#include "providers/access/CSavedQueries.h"

#include "providers/access/CQueryTokens.h"
#include "providers/access/CSystemRows.h"
#include "providers/access/SCNameOrder.h"
#include "providers/common/CSourceError.h"

#include <algorithm>
#include <functional>
#include <tuple>

namespace NSTQ::Providers {

using namespace Platform;

namespace {

/// The kinds of rows of a query.
constexpr std::uint32_t startAttribute = 0;
constexpr std::uint32_t typeAttribute = 1;
constexpr std::uint32_t optionsAttribute = 3;
constexpr std::uint32_t databaseAttribute = 4;
constexpr std::uint32_t tableAttribute = 5;
constexpr std::uint32_t columnAttribute = 6;
constexpr std::uint32_t whereAttribute = 8;
constexpr std::uint32_t endAttribute = 255;

constexpr std::uint32_t selectType = 1;
constexpr std::uint32_t allColumnsOption = 0x01;
/// Owner rights, and distinct rows of several tables: neither matters for one table.
constexpr std::uint32_t harmlessOptions = 0x04 | 0x08;
constexpr std::uint32_t kindOfQueryFlags = 0xF0;

constexpr std::size_t maxSize = 32U << 20;
/// The maximum of columns of a query, and of cached definitions.
constexpr std::size_t maxColumns = 255;
constexpr std::size_t maxTables = 16;

} // namespace

CSavedQueries::CSavedQueries(std::shared_ptr<const CDatabase> database, const CCatalogue& catalogue)
    : m_catalogue(catalogue) {
    const SDatabaseObject* const table = catalogue.Find(u"MSysQueries");
    if (table == nullptr || table->kind != EObjectKind::SystemTable)
        return;
    CSystemRows rows(std::move(database), catalogue.ReadTable(*table));
    const std::size_t id = rows.Find(u"ObjectId");
    const std::size_t attribute = rows.Find(u"Attribute");
    const std::size_t order = rows.Find(u"Order");
    const std::size_t flag = rows.Find(u"Flag");
    const std::size_t name1 = rows.Find(u"Name1");
    const std::size_t name2 = rows.Find(u"Name2");
    const std::size_t expression = rows.Find(u"Expression");
    const auto text = [&rows](std::size_t column) { return std::u16string(rows.GetText(column)); };
    std::size_t size = 0;
    while (rows.MoveNext()) {
        m_rows.push_back({rows.GetNumber(id), rows.GetNumber(attribute), text(order), rows.GetNumber(flag),
                          text(name1), text(name2), text(expression), static_cast<std::uint32_t>(m_rows.size())});
        const SRow& row = m_rows.back();
        size += sizeof row +
                sizeof(char16_t) * (row.order.size() + row.name1.size() + row.name2.size() + row.expression.size());
        if (size > maxSize)
            throw CSourceError("its saved queries take more than " + std::to_string(maxSize) + " bytes");
    }
    // A stable sort would take as much memory again as the rows.
    std::ranges::sort(m_rows, [](const SRow& left, const SRow& right) {
        return std::tie(left.id, left.attribute, left.order, left.position) <
               std::tie(right.id, right.attribute, right.order, right.position);
    });
}

CSavedQueries::SRows CSavedQueries::GetRows(std::uint32_t id) const {
    const auto first = std::ranges::lower_bound(m_rows, id, {}, &SRow::id);
    return {first, std::ranges::upper_bound(first, m_rows.end(), id, {}, &SRow::id)};
}

/// Whether the query consists only of columns, one table and conditions.
bool CSavedQueries::IsPlainSelect(const SRows& rows) {
    const auto isPlain = [](const SRow& row) {
        switch (row.attribute) {
        case typeAttribute:
            return row.flag == selectType && row.name1.empty() && row.expression.empty();
        case optionsAttribute:
            return (row.flag & ~(allColumnsOption | harmlessOptions)) == 0;
        case databaseAttribute:
            return row.name1.empty() && row.expression.empty();
        case tableAttribute:
            return row.expression.empty();
        case startAttribute:
        case columnAttribute:
        case whereAttribute:
        case endAttribute:
            return true;
        default:
            return false;
        }
    };
    return std::ranges::all_of(rows, isPlain) && std::ranges::count(rows, tableAttribute, &SRow::attribute) == 1 &&
           std::ranges::count(rows, whereAttribute, &SRow::attribute) <= 1;
}

/// A column, or all of them as Table.*
bool CSavedQueries::TakeOutput(const SRow& row, const CColumnScope& scope, SQueryPlan& plan) {
    CQueryTokens tokens(row.expression);
    SToken name = tokens.Current();
    tokens.Advance();
    if (plan.outputs.size() > maxColumns)
        return false;
    bool isAll = name.kind == ETokenKind::Sign && name.text == u"*";
    if (name.kind == ETokenKind::Name && tokens.Take(u".")) {
        if (!scope.IsTable(name.text))
            return false;
        name = tokens.Current();
        tokens.Advance();
        isAll = name.kind == ETokenKind::Sign && name.text == u"*";
    }
    if (tokens.Current().kind != ETokenKind::End)
        return false;
    if (isAll) {
        for (std::size_t i = 0; i < scope.GetCount(); ++i)
            plan.outputs.push_back({scope[i].name, i});
        return true;
    }
    const auto column = name.kind == ETokenKind::Name ? scope.Find(name.text) : std::nullopt;
    if (!column)
        return false;
    plan.outputs.push_back({row.name1.empty() ? scope[*column].name : row.name1, *column});
    return true;
}

/// False also when two columns would have the same name: the database then generates others.
bool CSavedQueries::TakeOutputs(const SRows& rows, const CColumnScope& scope, SQueryPlan& plan) {
    for (const SRow& row : rows) {
        if (row.attribute == columnAttribute && !TakeOutput(row, scope, plan))
            return false;
    }
    const bool hasAll = std::ranges::any_of(rows, [](const SRow& row) {
        return row.attribute == optionsAttribute && (row.flag & allColumnsOption) != 0;
    });
    for (std::size_t i = 0; hasAll && i < scope.GetCount(); ++i)
        plan.outputs.push_back({scope[i].name, i});
    std::vector<std::u16string_view> names;
    for (const SQueryPlan::SOutput& output : plan.outputs)
        names.push_back(output.name);
    const auto isBefore = [](std::u16string_view left, std::u16string_view right) {
        return SCNameOrder::Compare(left, right) < 0;
    };
    std::ranges::sort(names, isBefore);
    return !names.empty() && std::ranges::adjacent_find(names, std::not_fn(isBefore)) == names.end();
}

const STableDefinition& CSavedQueries::GetTable(const SDatabaseObject& table) {
    const auto found = m_tables.find(table.id);
    if (found != m_tables.end())
        return found->second;
    if (m_tables.size() == maxTables)
        m_tables.clear();
    return m_tables.emplace(table.id, m_catalogue.ReadTable(table)).first->second;
}

std::optional<SQueryPlan> CSavedQueries::MakePlan(const SDatabaseObject& query) {
    const auto rows = GetRows(query.id);
    if ((query.flags & kindOfQueryFlags) != 0 || !IsPlainSelect(rows))
        return std::nullopt;
    const SRow& from = *std::ranges::find(rows, tableAttribute, &SRow::attribute);
    const SDatabaseObject* const table = m_catalogue.Find(from.name1);
    if (table == nullptr || table->kind != EObjectKind::Table)
        return std::nullopt;
    SQueryPlan plan = {GetTable(*table), {}, {}};
    const std::vector<std::u16string> names = {from.name2.empty() ? from.name1 : from.name2};
    const CColumnScope scope(plan.table.columns, names);
    const auto where = std::ranges::find(rows, whereAttribute, &SRow::attribute);
    if (where != rows.end()) {
        auto conditions = CQueryConditions::Parse(where->expression, scope);
        if (!conditions)
            return std::nullopt;
        plan.conditions = std::move(*conditions);
    }
    if (!TakeOutputs(rows, scope, plan))
        return std::nullopt;
    return plan;
}

} // namespace NSTQ::Providers
