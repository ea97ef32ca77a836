#include "providers/access/CAccessSource.h"

#include "providers/access/CQueryRows.h"
#include "providers/access/CTableRows.h"
#include "providers/common/CSourceError.h"

namespace NSTQ::Providers {

using namespace Platform;

namespace {

std::u16string GetTypeName(EObjectKind kind) {
    switch (kind) {
    case EObjectKind::Table:
        return u"TABLE";
    case EObjectKind::AccessTable:
        return u"ACCESS TABLE";
    case EObjectKind::SystemTable:
        return u"SYSTEM TABLE";
    case EObjectKind::LinkedTable:
        return u"LINK";
    case EObjectKind::LinkedOdbcTable:
        return u"PASS-THROUGH";
    case EObjectKind::Query:
        break;
    }
    return u"VIEW";
}

} // namespace

std::vector<STableSchema> CAccessSource::ListTables() {
    std::vector<STableSchema> tables;
    for (const SDatabaseObject& object : m_catalogue.GetObjects()) {
        if (IsOffered(object))
            tables.push_back({object.name, GetTypeName(object.kind)});
    }
    return tables;
}

/// Damage in the queries or in a table does not prevent the rest from being listed.
bool CAccessSource::IsOffered(const SDatabaseObject& object) {
    if (object.kind != EObjectKind::Query)
        return true;
    try {
        return MakePlan(object).has_value();
    } catch (const CSourceError&) {
        return true;
    } catch (const _com_error& error) {
        if (error.Error() == E_OUTOFMEMORY)
            throw;
        return true;
    }
}

std::optional<SQueryPlan> CAccessSource::MakePlan(const SDatabaseObject& query) {
    if (m_queriesFailure)
        std::rethrow_exception(m_queriesFailure);
    try {
        if (!m_queries)
            m_queries.emplace(m_database, m_catalogue);
    } catch (const std::runtime_error&) {
        m_queriesFailure = std::current_exception();
        throw;
    }
    return m_queries->MakePlan(query);
}

std::unique_ptr<IRowSource> CAccessSource::OpenTable(std::u16string_view name) {
    return RaiseAsComError(m_database->GetPath(), [&] { return OpenObject(name); });
}

std::unique_ptr<IRowSource> CAccessSource::OpenObject(std::u16string_view name) {
    const SDatabaseObject* const object = m_catalogue.Find(name);
    if (object == nullptr)
        throw CSourceError("it has no table or query " + AnsiFromWide(name), DB_E_NOTABLE);
    switch (object->kind) {
    case EObjectKind::Table:
    case EObjectKind::AccessTable:
    case EObjectKind::SystemTable:
        return std::make_unique<CTableRows>(m_database, m_catalogue.ReadTable(*object));
    case EObjectKind::LinkedTable:
    case EObjectKind::LinkedOdbcTable:
        throw CSourceError("the table " + AnsiFromWide(object->name) + " is in another database");
    case EObjectKind::Query:
        break;
    }
    if (auto plan = MakePlan(*object))
        return std::make_unique<CQueryRows>(m_database, std::move(*plan));
    throw CSourceError("the query " + AnsiFromWide(object->name) + " uses features that are not supported");
}

} // namespace NSTQ::Providers
