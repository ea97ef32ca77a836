// A database as a data source: its tables, and those of its saved queries that are supported.
#pragma once

#include "platform/ado/Provider.h"
#include "providers/access/CCatalogue.h"
#include "providers/access/CSavedQueries.h"

#include <exception>

namespace NSTQ::Providers {

class CAccessSource : public Platform::IDataSource {
public:
    /// Throws CSourceError; the operations below throw _com_error.
    explicit CAccessSource(std::shared_ptr<const CDatabase> database)
        : m_database(std::move(database)), m_catalogue(m_database) {}

    /// Tables and queries in the order of their names, whatever the case of letters:
    ///   TABLE          tables of the user, also those that are hidden
    ///   VIEW           supported queries, and damaged ones, which fail when they are opened
    ///   ACCESS TABLE   tables of the program and temporary ones
    ///   SYSTEM TABLE   tables of the database engine
    ///   LINK           tables in other databases, PASS-THROUGH when they are reached through ODBC
    std::vector<Platform::STableSchema> ListTables() override;
    std::unique_ptr<Platform::IRowSource> OpenTable(std::u16string_view name) override;

private:
    std::unique_ptr<Platform::IRowSource> OpenObject(std::u16string_view name);
    bool IsOffered(const SDatabaseObject& object);
    std::optional<SQueryPlan> MakePlan(const SDatabaseObject& query);

    std::shared_ptr<const CDatabase> m_database;
    CCatalogue m_catalogue;
    std::optional<CSavedQueries> m_queries; ///< read when there is a query
    std::exception_ptr m_queriesFailure;    ///< why they cannot be read
};

} // namespace NSTQ::Providers
