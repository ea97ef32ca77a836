// The catalog of a database, from its table MSysObjects.
#pragma once

#include "providers/access/STableDefinition.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Providers {

enum class EObjectKind {
    Table,
    AccessTable, ///< of the program itself, or about to be deleted
    SystemTable,
    LinkedTable, ///< in another database
    LinkedOdbcTable,
    Query
};

struct SDatabaseObject {
    std::u16string name;
    EObjectKind kind;
    std::uint32_t id; ///< for tables of this database, the page of the definition
    std::uint32_t flags;
    SRowAddress place; ///< of its row in the catalog
};

class CCatalogue {
public:
    /// Reads all of it. Throws CSourceError or _com_error when it cannot be read or is larger than any database
    /// has. The database is shared.
    explicit CCatalogue(std::shared_ptr<const CDatabase> database);

    /// In the order of their names.
    const std::vector<SDatabaseObject>& GetObjects() const { return m_objects; }
    /// The table or query of a name, ignoring case; null when there is none.
    const SDatabaseObject* Find(std::u16string_view name) const;
    /// The definition of a table of this database, with the types of the results of its calculated columns.
    STableDefinition ReadTable(const SDatabaseObject& object) const;

private:
    std::shared_ptr<const CDatabase> m_database;
    std::vector<SDatabaseObject> m_objects;
};

} // namespace NSTQ::Providers
