#include "providers/zip/CZipArchive.h"

#include "platform/codepage/AsciiCase.h"
#include "providers/common/CSourceError.h"

#include <algorithm>

namespace NSTQ::Providers {

namespace {

/// Bytes after the archive are accepted: they are harmless because nothing is written.
constexpr SZipCaps caps = {1U << 18, 1U << 24, true};

/// The form in which names are compared.
std::string FoldName(std::string_view name) {
    std::string folded = Platform::ToAsciiLowerText(std::string(name.starts_with('/') ? name.substr(1) : name));
    std::ranges::replace(folded, '\\', '/');
    return folded;
}

} // namespace

CZipArchive::CZipArchive(std::shared_ptr<IRandomAccess> input)
    : m_input(std::move(input)), m_entries(CZipDirectory(*m_input, caps).TakeEntries()) {
    for (SZipEntry& entry : m_entries)
        entry.name = FoldName(entry.name);
    std::sort(m_entries.begin(), m_entries.end(),
              [](const SZipEntry& left, const SZipEntry& right) { return left.name < right.name; });
    const auto sameName = [](const SZipEntry& left, const SZipEntry& right) { return left.name == right.name; };
    if (std::adjacent_find(m_entries.begin(), m_entries.end(), sameName) != m_entries.end())
        throw CSourceError("the zip directory has two entries with the same name");
}

const SZipEntry* CZipArchive::Find(std::string_view name) const {
    const std::string folded = FoldName(name);
    const auto found =
        std::lower_bound(m_entries.begin(), m_entries.end(), folded,
                         [](const SZipEntry& entry, const std::string& wanted) { return entry.name < wanted; });
    return found != m_entries.end() && found->name == folded ? &*found : nullptr;
}

std::unique_ptr<IByteStream> CZipArchive::Open(const SZipEntry& entry, const SInflateLimits& limits) const {
    if (entry.IsEncrypted())
        throw CSourceError("zip entry " + PrintableName(entry.name) + ": it is encrypted");
    return std::make_unique<CZipEntryStream>(m_input, entry, limits);
}

} // namespace NSTQ::Providers
