// Files made to do harm, run as a program that uses the library would read them, each in a process of its own that is
// measured.
//
// A kind of file has a table in a source of its own (PackageCases.cpp, ...) and a line in HostileTest.cpp.
// The first case of a table is a valid file: its memory is the base of the limit for the others.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace NSTQ::Tests {

struct SHostileCase {
    std::string title;
    std::function<std::string()> make; ///< the bytes of the file; run in a process of its own
    std::string result = "refused";    ///< how the outcome begins
    std::string word = {};             ///< and what else it contains: the cause
};

/// A row of a table of damages. The outcome is as of RunSource, but of a refusal it is the cause alone.
template <class TParts>
struct SSpoiled {
    const char* title;
    std::function<void(TParts&)> spoil;
    const char* outcome;
};

/// Adds a case for each row; `make` makes a file that `spoil` has damaged.
void AddSpoiled(std::vector<SHostileCase>& cases, const auto& table, auto make, const std::string& suffix = {}) {
    for (const auto& row : table) {
        const std::string outcome = row.outcome;
        const bool isRead = outcome.find_first_of("0123456789") == 0 && outcome.ends_with(" rows");
        const bool isCause = !isRead && !outcome.starts_with("beyond a limit");
        cases.push_back({row.title + suffix, [=, &row] { return make(row.spoil); }, isCause ? "refused: " : outcome,
                         isCause ? outcome : ""});
    }
}

/// Adds a case for every `step` bytes that are left of a file from `size` to `end`.
inline void AddTruncated(std::vector<SHostileCase>& cases, const std::string& file, std::size_t size,
                         std::size_t step, std::size_t end, const std::string& suffix = {}) {
    for (; size < end; size += step)
        cases.push_back({"truncated to " + std::to_string(size) + suffix, [=] { return file.substr(0, size); }});
}

struct SHostileKind {
    const char* name;
    const char* fileName;
    std::vector<SHostileCase> (*cases)();
    /// Reads the file at `path` and returns the outcome. The file is alone in its folder, but for one named "x".
    std::string (*run)(const std::string& path);
};

/// Describes, prepares, opens and reads a source to its end. The outcome is "3 rows", "refused" when a package cannot
/// be unpacked, "refused: cause" when a workbook or database cannot be opened or read (E_FAIL), "beyond a limit:
/// cause" when it is too large (DB_E_DATAOVERFLOW), or what else happened. Of the tables it reads the first.
std::string RunSource(const std::string& path);
/// Reads the second table.
std::string RunSecondTable(const std::string& path);

struct SMeasured {
    std::string outcome;
    double seconds = 0; ///< of the processor, so that other load does not matter
    long kilobytes = 0; ///< the most that were in use at once
};

/// Makes the file and reads it, each in a process of its own; nothing else in its folder may change.
SMeasured RunCase(const SHostileKind& kind, const SHostileCase& hostile);

std::vector<SHostileCase> PackageCases();
std::string RunPackage(const std::string& path);
std::vector<SHostileCase> XlsxCases();
std::vector<SHostileCase> CompoundCases();
std::vector<SHostileCase> XlsCases();
std::vector<SHostileCase> AccessCases();
std::string RunAccess(const std::string& path);

} // namespace NSTQ::Tests
