#include "SCSeparatorProbe.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace NSTQ::Tool {
namespace {

constexpr std::string_view candidates = "\t;|,"; // the first of two that are equally good is the better one

bool IsDigit(std::string_view text, std::size_t at) {
    return at < text.size() && text[at] >= '0' && text[at] <= '9';
}

/// Rows of a text by one separator.
class CRowCounter {
public:
    struct SRow {
        std::size_t fields = 1;
        std::size_t decimals = 0;   ///< of the separators, those between digits
        bool hasCandidates = false; ///< at least one, outside quotes
        bool isComplete = true;     ///< it has a line end
    };

    CRowCounter(std::string_view text, const SLineEnd& lineEnd, bool quoteNewLine, char separator)
        : m_text(text), m_lineEnd(lineEnd.Bytes()), m_quoteNewLine(quoteNewLine), m_separator(separator) {}

    bool HasNext() const { return m_at < m_text.size(); }

    SRow Next() {
        SRow row;
        bool atStart = true; // of a field
        while (m_at < m_text.size()) {
            const char c = m_text[m_at];
            if (c == m_lineEnd[0] && m_text.substr(m_at).starts_with(m_lineEnd)) {
                m_at += m_lineEnd.size();
                return row;
            }
            if (c == '"' && atStart)
                SkipQuoted();
            else
                ++m_at;
            if (candidates.find(c) != std::string_view::npos)
                row.hasCandidates = true;
            if (c == m_separator) {
                ++row.fields;
                row.decimals += m_at > 1 && IsDigit(m_text, m_at - 2) && IsDigit(m_text, m_at) ? 1 : 0;
            }
            atStart = c == m_separator || (atStart && c == ' ');
        }
        row.isComplete = false;
        return row;
    }

private:
    /// Goes past the closing quote; without one, past the opening one, and quotes are data from then on.
    void SkipQuoted() {
        const std::size_t lineEnd =
            m_quoteNewLine ? std::string_view::npos : std::min(m_text.find(m_lineEnd, m_at), m_text.size());
        std::size_t end = m_areQuotesData ? std::string_view::npos : m_text.find('"', m_at + 1);
        while (end != std::string_view::npos && m_text.substr(end + 1).starts_with('"'))
            end = m_text.find('"', end + 2);
        if (end == std::string_view::npos)
            m_areQuotesData = true;
        m_at = end == std::string_view::npos || end > lineEnd ? m_at + 1 : end + 1;
    }

    std::string_view m_text;
    std::string m_lineEnd;
    bool m_quoteNewLine;
    char m_separator;
    std::size_t m_at = 0;
    bool m_areQuotesData = false;
};

/// What a separator makes of the text.
struct SStatistics {
    char separator = 0;
    std::size_t fields = 1;      ///< the most frequent number of fields of the rows that have any candidate
    std::size_t plainFields = 1; ///< the same without decimal commas
    std::size_t percent = 0;     ///< of these rows, how many have `fields`; 0 if that is 1
    std::size_t firstFields = 1; ///< of the first of these rows, without decimal commas
    std::size_t rows = 0;        ///< those that have any candidate
    bool isTable = false;        ///< they are at least half of all

    bool Separates() const { return plainFields > 1; }
};

using CCounts = std::map<std::size_t, std::size_t>;

CCounts::value_type MostFrequent(const CCounts& counts) {
    return *std::ranges::max_element(counts, {}, [](const auto& entry) { return entry.second; });
}

SStatistics Examine(CRowCounter counter, char separator, bool isWhole) {
    SStatistics found{.separator = separator};
    CCounts counts;
    CCounts plainCounts;
    std::size_t rows = 0;
    while (counter.HasNext()) {
        const CRowCounter::SRow row = counter.Next();
        if (!row.isComplete && !isWhole && found.rows > 0)
            break;
        // A title before the table does not make it one column.
        rows += row.hasCandidates || found.rows > 0 ? 1 : 0;
        if (!row.hasCandidates)
            continue;
        const std::size_t plain = row.fields - (separator == ',' ? row.decimals : 0);
        found.firstFields = ++found.rows == 1 ? plain : found.firstFields;
        ++counts[row.fields];
        ++plainCounts[plain];
    }
    if (found.rows == 0)
        return found;
    const auto [fields, times] = MostFrequent(counts);
    found.fields = fields;
    found.plainFields = MostFrequent(plainCounts).first;
    found.percent = fields > 1 ? times * 100 / found.rows : 0;
    found.isTable = found.rows * 2 >= rows;
    return found;
}

/// By the line "sep=;" that spreadsheet programs know; else 0.
char FindNamed(std::string_view text, const SLineEnd& lineEnd) {
    constexpr std::string_view prefix = "sep=";
    const std::string_view named = text.substr(std::min(text.size(), prefix.size()));
    const bool isNamed = text.starts_with(prefix) && !named.empty() && named.substr(1).starts_with(lineEnd.Bytes());
    return isNamed && candidates.find(named[0]) != std::string_view::npos ? named[0] : '\0';
}

constexpr std::size_t clearPercent = 80; ///< the lowest that makes a separator clear
constexpr std::size_t vaguePercent = 50;
constexpr std::size_t clearlyMore = 25;

/// Whether the best of the other separators replaces the expected one.
bool IsBetter(const SStatistics& other, const SStatistics& expected) {
    if (other.percent < clearPercent || !other.Separates())
        return false;
    const bool isFirstRowOfOther = expected.firstFields == 1 && other.firstFields == other.fields;
    return !expected.Separates() || isFirstRowOfOther || other.percent >= expected.percent + clearlyMore;
}

bool IsRival(const SStatistics& other, const SStatistics& expected) {
    // A single row tells little, and TABs within fields are rare.
    if (!other.Separates() || other.rows < 2 || expected.separator == '\t')
        return false;
    if (other.percent >= clearPercent)
        return other.fields >= expected.plainFields;
    return other.percent >= vaguePercent && expected.percent < vaguePercent;
}

} // namespace

SCSeparatorProbe::SGuess SCSeparatorProbe::Find(std::string_view text, bool isWhole, const SLineEnd& lineEnd,
                                                bool quoteNewLine, char expected) {
    if (const char named = FindNamed(text, lineEnd); named != 0)
        return {named, 0};
    SStatistics best;
    for (const char separator : candidates) {
        if (separator == expected || text.find(separator) == std::string_view::npos)
            continue;
        const auto found = Examine({text, lineEnd, quoteNewLine, separator}, separator, isWhole);
        const auto rank = [](const auto& one) { return std::tuple(one.Separates(), one.percent, one.plainFields); };
        if (found.isTable && rank(found) > rank(best))
            best = found;
    }
    if (best.separator == 0)
        return {expected, 0};
    if (expected == 0)
        return {best.percent >= clearPercent && best.rows > 1 ? best.separator : '\0', 0};
    const auto known = Examine({text, lineEnd, quoteNewLine, expected}, expected, isWhole);
    if (IsBetter(best, known))
        return {best.separator, 0};
    return {expected, IsRival(best, known) ? best.separator : '\0'};
}

} // namespace NSTQ::Tool
