// The sheets or tables that --all and --sheet select among those of a workbook or database.
#pragma once

#include "SOptions.h"

#include <cstddef>
#include <string>
#include <vector>

namespace NSTQ::Tool {

class SCTableSelection {
public:
    /// The source in messages.
    struct SSubject {
        std::string file;
        std::string kind; ///< "sheet" or "table"
    };

    /// Whether the options may select several tables, however many the source has: --all, or a pattern.
    static bool MaySelectSeveral(const SOptions& options);

    /// The positions in `names`, which are UTF-8, of the tables selected, ascending and at least one: all of them;
    /// the first one without --sheet; else those that --sheet gives by a name, a pattern or a number, the first of
    /// these that fits (see SCNameMatch). Throws CFailure, with the names, when there is none, or when a name without
    /// '*' and '?' is not clear.
    static std::vector<std::size_t> Find(const SOptions& options, const std::vector<std::string>& names,
                                         const SSubject& subject);
    /// The same for what takes only one. Throws CFailure also when several are selected.
    static std::size_t FindOne(const SOptions& options, const std::vector<std::string>& names,
                               const SSubject& subject);
};

} // namespace NSTQ::Tool
