// Files made to do harm, run as a host would read them, each in a process of its own that is measured.
//
// A kind of file has a table in a source of its own (PackageCases.cpp, ...) and a line in HostileTest.cpp.
// The first case of a table is a good file: what it takes is the floor for the others.
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
    std::string word = {};             ///< what it names: the cause
};

struct SHostileKind {
    const char* name;
    const char* fileName;
    std::vector<SHostileCase> (*cases)();
    /// Reads the file at `path` and tells the outcome. The file stands alone in its folder, beside one named "x".
    std::string (*run)(const std::string& path);
};

/// Describes, prepares, opens and reads a source to its end. The outcome is "3 rows", "refused" when a package cannot
/// be unpacked, "refused: cause" when a workbook or database cannot be opened or read (E_FAIL), "beyond a limit:
/// cause" when it is too large to be (DB_E_DATAOVERFLOW), or what else was met. `table` counts from 0.
std::string RunSource(const std::string& path, std::uint32_t table = 0);

struct SMeasured {
    std::string outcome;
    double seconds = 0; ///< of the processor, so that a busy machine does not matter
    long kilobytes = 0; ///< the most that were in use at once
};

/// Makes the file and reads it, each in a process of its own; nothing else in its folder may change.
SMeasured RunCase(const SHostileKind& kind, const SHostileCase& hostile);

/// The kinds that BlownUpTest.cpp runs; their cases have no result but for the first.
const std::vector<SHostileKind>& BlownUpKinds();

std::vector<SHostileCase> PackageCases();
std::string RunPackage(const std::string& path);

std::vector<SHostileCase> XlsxCases();
std::vector<SHostileCase> CompoundCases();
std::vector<SHostileCase> XlsCases();

std::vector<SHostileCase> AccessCases();
std::string RunAccess(const std::string& path);

} // namespace NSTQ::Tests
