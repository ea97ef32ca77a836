// The columns of a source that are written, and their order.
//
// It is resolved once for each source, by the names of its columns or their number; then it turns rows of text, or
// tells the positions of the columns to those who have rows of another kind. Nothing is allocated for a row.
#pragma once

#include "CColumnList.h"
#include "tqcAccess/Types.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace NSTQ::Tool {

class CColumnSelection {
public:
    /// The columns of the first list, or all if it is empty, without those of the second. Both must outlive it.
    CColumnSelection(const CColumnList& columns, const CColumnList& excluded)
        : m_columns(columns), m_excluded(excluded) {}

    /// Whether rows stay as they are: both lists are empty.
    bool IsIdle() const { return m_columns.IsEmpty() && m_excluded.IsEmpty(); }

    /// For a source whose columns have these names, in UTF-8. An item is the name that it equals; else a number or a
    /// range, such as 3-5, 5-3 or 3-, the last to the end; else the name that equals it without regard to case.
    /// Throws CFailure about `file` if there is no such column, or several have that name, or none is left.
    void Resolve(const std::string& file, const std::vector<std::string>& names);
    /// For a source whose columns have no names. Throws CFailure about `file`, also for an item that is a name.
    void Resolve(const std::string& file, std::size_t count);
    bool IsResolved() const { return m_isResolved; }

    /// The positions of the columns in the source, counted from 0.
    std::span<const std::size_t> Indexes() const { return m_indexes; }
    /// The position in the source of the column that is written at `index`.
    std::size_t SourceOf(std::size_t index) const;
    /// Whether the column at that position in the source is written.
    bool Has(std::size_t column) const;

    /// Replaces the fields of a row by those of the columns; one that the row lacks becomes an empty field. What a
    /// row has beyond the last column of the source is kept if all columns are wanted, or those of a range to the end
    /// at the end of the list. The fields are valid until the next call, as long as those of the row are.
    void Apply(const char**& fields, const WORD*& lengths, DWORD& count);

private:
    struct SColumns {
        const std::string& file;
        const std::vector<std::string>* names; ///< null if they have none
        std::size_t count;
    };

    void ResolveIn(const SColumns& source);
    static std::vector<std::size_t> Find(const SColumns& source, const CColumnList::SItem& item);
    static std::vector<std::size_t> FindRange(const SColumns& source, std::size_t first, std::size_t last);
    static std::size_t FindNamed(const SColumns& source, const std::string& name, bool isExact);

    const CColumnList& m_columns;
    const CColumnList& m_excluded;
    bool m_isResolved = false;
    std::vector<std::size_t> m_indexes;
    std::size_t m_restFrom = 0; ///< the position from which on further fields of a row are kept
    bool m_keepsRest = false;
    std::vector<const char*> m_fields;
    std::vector<WORD> m_lengths;
};

} // namespace NSTQ::Tool
