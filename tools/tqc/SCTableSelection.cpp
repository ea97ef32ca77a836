#include "SCTableSelection.h"

#include "CFailure.h"
#include "SCNameMatch.h"

#include <charconv>
#include <numeric>
#include <optional>

namespace NSTQ::Tool {
namespace {

using CPositions = std::vector<std::size_t>;

std::string Join(const std::vector<std::string>& names, const CPositions& positions) {
    std::string list;
    for (const std::size_t at : positions)
        list += (list.empty() ? "" : ", ") + names[at];
    return list;
}

CPositions AllOf(const std::vector<std::string>& names) {
    CPositions all(names.size());
    std::iota(all.begin(), all.end(), std::size_t{0});
    return all;
}

/// Counted from 1; none when the text is not the number of any of `count` tables.
std::optional<std::size_t> ReadNumber(const std::string& text, std::size_t count) {
    std::size_t number = 0;
    const char* const end = text.data() + text.size();
    const bool isNumber = std::from_chars(text.data(), end, number).ptr == end;
    return isNumber && number > 0 && number <= count ? std::optional(number) : std::nullopt;
}

[[noreturn]] void RefuseSeveral(const SOptions& options, const std::vector<std::string>& names,
                                const CPositions& found, const SCTableSelection::SSubject& subject,
                                const std::string& how, const std::string& hint) {
    throw CFailure(EExitStatus::NotFound, subject.file,
                   "several " + subject.kind + "s match \"" + options.sheet + "\"" + how + ": " + Join(names, found) +
                       "; " + hint);
}

[[noreturn]] void RefuseNone(const SOptions& options, const std::vector<std::string>& names,
                             const SCTableSelection::SSubject& subject) {
    if (names.empty())
        throw CFailure(EExitStatus::NotFound, subject.file,
                       subject.kind == "table" ? "no table in it" : "no worksheet in it");
    const std::string none = SCNameMatch::IsPattern(options.sheet) ? " matches \"" : " \"";
    throw CFailure(EExitStatus::NotFound, subject.file,
                   "no " + subject.kind + none + options.sheet + "\"; " + subject.kind +
                       "s: " + Join(names, AllOf(names)) + " (see: tqc list " + subject.file + ")");
}

} // namespace

bool SCTableSelection::MaySelectSeveral(const SOptions& options) {
    return options.allTables || SCNameMatch::IsPattern(options.sheet);
}

std::vector<std::size_t> SCTableSelection::Find(const SOptions& options, const std::vector<std::string>& names,
                                                const SSubject& subject) {
    const std::string& wanted = options.sheet;
    if (names.empty())
        RefuseNone(options, names, subject);
    if (options.allTables)
        return AllOf(names);
    if (wanted.empty())
        return {0};
    CPositions found = SCNameMatch::Find(names, wanted);
    if (found.size() > 1 && !SCNameMatch::IsPattern(wanted))
        RefuseSeveral(options, names, found, subject, " if case is ignored", "give the exact name");
    if (!found.empty())
        return found;
    const auto number = ReadNumber(wanted, names.size());
    if (!number)
        RefuseNone(options, names, subject);
    return {*number - 1};
}

std::size_t SCTableSelection::FindOne(const SOptions& options, const std::vector<std::string>& names,
                                      const SSubject& subject) {
    const CPositions found = Find(options, names, subject);
    if (found.size() > 1)
        RefuseSeveral(options, names, found, subject, "",
                      options.command == SOptions::ECommand::Convert
                          ? "add --out-dir to write each to a file, or give one name"
                          : "give one name");
    return found[0];
}

} // namespace NSTQ::Tool
