#include "CColumnSelection.h"

#include "CFailure.h"
#include "SCNameMatch.h"

#include <algorithm>
#include <charconv>
#include <numeric>
#include <optional>

namespace NSTQ::Tool {
namespace {

/// Numbers counted from 1.
struct SRange {
    std::size_t first;
    std::size_t last; ///< 0: the last column
};

std::optional<std::size_t> TakeNumber(std::string_view& text) {
    std::size_t number = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || number == 0)
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(stop - text.data()));
    return number;
}

/// "3", "3-5" or "3-".
std::optional<SRange> ReadRange(std::string_view text) {
    const auto first = TakeNumber(text);
    if (!first)
        return std::nullopt;
    if (text.empty())
        return SRange{*first, *first};
    if (text == "-")
        return SRange{*first, 0};
    if (!text.starts_with('-'))
        return std::nullopt;
    text.remove_prefix(1);
    const auto last = TakeNumber(text);
    return last && text.empty() ? std::optional(SRange{*first, *last}) : std::nullopt;
}

bool IsOpenRange(const CColumnList::SItem& item) {
    const auto range = item.isName ? std::nullopt : ReadRange(item.text);
    return range && range->last == 0;
}

/// The first names of a list that may be long.
std::string ListNames(const std::vector<std::string>& names) {
    constexpr std::size_t sizeMax = 200;
    std::string list;
    std::size_t listed = 0;
    for (; listed < names.size() && list.size() + names[listed].size() < sizeMax; ++listed)
        list += (listed == 0 ? "" : ", ") + names[listed];
    return listed == names.size() ? list : list + ", and " + std::to_string(names.size() - listed) + " more";
}

/// Positions counted from 0 of numbers counted from 1, in either order.
std::vector<std::size_t> ToIndexes(std::size_t first, std::size_t last) {
    std::vector<std::size_t> indexes(std::max(first, last) - std::min(first, last) + 1);
    std::iota(indexes.begin(), indexes.end(), std::min(first, last) - 1);
    if (first > last)
        std::ranges::reverse(indexes);
    return indexes;
}

} // namespace

void CColumnSelection::Resolve(const std::string& file, const std::vector<std::string>& names) {
    ResolveIn({file, &names, names.size()});
}

void CColumnSelection::Resolve(const std::string& file, std::size_t count) {
    ResolveIn({file, nullptr, count});
}

void CColumnSelection::ResolveIn(const SColumns& source) {
    m_isResolved = true;
    m_indexes.clear();
    if (m_columns.IsEmpty() && source.count > 0)
        m_indexes = ToIndexes(1, source.count);
    for (const CColumnList::SItem& item : m_columns.Items())
        for (const std::size_t index : Find(source, item))
            m_indexes.push_back(index);
    for (const CColumnList::SItem& item : m_excluded.Items())
        for (const std::size_t excluded : Find(source, item))
            std::erase(m_indexes, excluded);
    if (m_indexes.empty() && source.count > 0)
        throw CFailure(EExitStatus::Usage, source.file, "--exclude leaves no column");
    m_keepsRest = m_columns.IsEmpty() || IsOpenRange(m_columns.Items().back());
    m_restFrom = source.count;
}

/// The positions of the columns that an item means.
std::vector<std::size_t> CColumnSelection::Find(const SColumns& source, const CColumnList::SItem& item) {
    const bool isExact =
        source.names != nullptr && std::ranges::find(*source.names, item.text) != source.names->end();
    if (!isExact && !item.isName)
        if (const auto range = ReadRange(item.text))
            return FindRange(source, range->first,
                             range->last == 0 ? std::max(range->first, source.count) : range->last);
    if (source.names == nullptr)
        throw CFailure(EExitStatus::Usage, source.file,
                       "the columns have no names, so \"" + item.text +
                           "\" cannot be found; give numbers, or --header if the first row holds the names");
    return {FindNamed(source, item.text, isExact)};
}

std::vector<std::size_t> CColumnSelection::FindRange(const SColumns& source, std::size_t first, std::size_t last) {
    if (const std::size_t highest = std::max(first, last); highest > source.count)
        throw CFailure(EExitStatus::NotFound, source.file,
                       "no column " + std::to_string(highest) + "; the number of columns is " +
                           std::to_string(source.count));
    return ToIndexes(first, last);
}

std::size_t CColumnSelection::FindNamed(const SColumns& source, const std::string& name, bool isExact) {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; isExact && i < source.count; ++i)
        if ((*source.names)[i] == name)
            found.push_back(i);
    if (!isExact)
        found = SCNameMatch::Find(*source.names, name);
    if (found.empty())
        throw CFailure(EExitStatus::NotFound, source.file,
                       "no column \"" + name + "\"; columns: " + ListNames(*source.names));
    if (found.size() > 1)
        throw CFailure(EExitStatus::NotFound, source.file,
                       "columns " + std::to_string(found[0] + 1) + " and " + std::to_string(found[1] + 1) +
                           " are both named \"" + name + (isExact ? "\"" : "\" if case is ignored") +
                           "; give the number" + (isExact ? "" : " or the exact name"));
    return found[0];
}

std::size_t CColumnSelection::SourceOf(std::size_t index) const {
    return index < m_indexes.size() ? m_indexes[index] : m_restFrom + (index - m_indexes.size());
}

bool CColumnSelection::Has(std::size_t column) const {
    return IsIdle() || std::ranges::find(m_indexes, column) != m_indexes.end() ||
           (m_keepsRest && column >= m_restFrom);
}

void CColumnSelection::Apply(const char**& fields, const WORD*& lengths, DWORD& count) {
    m_fields.clear();
    m_lengths.clear();
    for (const std::size_t index : m_indexes) {
        const bool isThere = index < count;
        m_fields.push_back(isThere ? fields[index] : "");
        m_lengths.push_back(isThere ? lengths[index] : WORD{0});
    }
    for (std::size_t i = m_restFrom; m_keepsRest && i < count; ++i) {
        m_fields.push_back(fields[i]);
        m_lengths.push_back(lengths[i]);
    }
    fields = m_fields.data();
    lengths = m_lengths.data();
    count = static_cast<DWORD>(m_fields.size());
}

} // namespace NSTQ::Tool
