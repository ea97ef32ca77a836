#include "common/CUnpackPlan.h"

#include "common/CUnZip.h"
#include "common/SCEntryNames.h"
#include "platform/files/Files.h"
#include "platform/files/Path.h"
#include "tqcAccess/CodePage.h"

#include <algorithm>
#include <string_view>

namespace NSTQ::NSTQCore {

namespace {

using Providers::CZipDirectory;
using Providers::SZipEntry;

/// One of the control characters begins an escape of the files layer; no package needs it.
bool HasControlCharacters(std::string_view name) {
    return std::any_of(name.begin(), name.end(), [](char byte) { return static_cast<unsigned char>(byte) < 0x20; });
}

/// The name as a path of the system, with '/' for both separators.
bool ConvertName(const SZipEntry& entry, std::string& path) {
    if (entry.name.empty() || HasControlCharacters(entry.name))
        return false;
    if (!entry.IsNameUtf8())
        return Platform::ConvertToSystemPath(entry.name.c_str(), path) == Platform::ERROR_SUCCESS;
    path = entry.name;
    std::replace(path.begin(), path.end(), '\\', '/');
    return Platform::CountValidUtf8(path.data(), path.size()) == path.size();
}

/// Not "." and ".." either, which end with a dot.
bool IsPartAllowed(std::string_view part) {
    constexpr std::size_t maxPartSize = 255;
    return part.size() <= maxPartSize && SCEntryNames::IsAllowed(part);
}

bool IsPathAllowed(std::string_view path) {
    if (path.size() > CUnZip::MAX_PATH_SIZE)
        return false;
    for (std::size_t depth = 1; depth <= CUnZip::MAX_DEPTH; ++depth) {
        const std::size_t end = path.find('/');
        if (!IsPartAllowed(path.substr(0, end)))
            return false;
        if (end == std::string_view::npos)
            return true;
        path.remove_prefix(end + 1);
    }
    return false;
}

/// False for an entry that is neither a file nor a folder, and for one that states both. The mode applies whatever
/// system the entry states.
bool FindKind(const SZipEntry& entry, bool isNamedFolder, bool& isFolder) {
    constexpr std::uint32_t dosFolder = 0x10;
    constexpr std::uint32_t dosDeviceOrLink = 0x40 | 0x400;
    constexpr std::uint32_t kindMask = 0170000;
    constexpr std::uint32_t kindFolder = 0040000;
    constexpr std::uint32_t kindFile = 0100000;
    const std::uint32_t kind = entry.attributes >> 16 & kindMask;
    if ((entry.attributes & dosDeviceOrLink) != 0 || (kind != 0 && kind != kindFolder && kind != kindFile))
        return false;
    isFolder = isNamedFolder || kind == kindFolder || (kind == 0 && (entry.attributes & dosFolder) != 0);
    return !isFolder || (kind != kindFile && entry.size == 0);
}

bool IsRatioAllowed(const SZipEntry& entry) {
    return entry.size <= CUnZip::RATIO_FREE_SIZE || entry.size / CUnZip::MAX_RATIO <= entry.packedSize;
}

bool PlanEntry(const SZipEntry& entry, SPlannedEntry& planned) {
    planned.size = entry.size;
    if (!ConvertName(entry, planned.path))
        return false;
    const bool isNamedFolder = planned.path.ends_with('/');
    if (isNamedFolder)
        planned.path.pop_back();
    return IsPathAllowed(planned.path) && FindKind(entry, isNamedFolder, planned.isFolder) && IsRatioAllowed(entry);
}

/// An entry as it is sorted and compared. Each part of a path ends with NUL, which is below every allowed character:
/// the content of a folder follows it directly.
struct SKey {
    explicit SKey(const SPlannedEntry& entry) : path(entry.path + '/'), isFolder(entry.isFolder) {
        std::replace(path.begin(), path.end(), '/', '\0');
        folded = SCEntryNames::Fold(path);
    }

    std::string path;
    std::string folded; ///< as long as the path
    bool isFolder;
};

std::size_t CountParts(std::string_view path) {
    return static_cast<std::size_t>(std::count(path.begin(), path.end(), '\0'));
}

/// The beginning of the second path that consists of the folders (or the file) that both have.
std::string_view SharedParts(std::string_view before, std::string_view path) {
    const auto differs = std::mismatch(before.begin(), before.end(), path.begin(), path.end()).second;
    const std::string_view same = path.substr(0, static_cast<std::size_t>(differs - path.begin()));
    return same.substr(0, same.rfind('\0') + 1);
}

/// Two names that differ in case alone are one on Windows.
bool Conflicts(const SKey& left, const SKey& right) {
    const std::size_t shared = SharedParts(left.folded, right.folded).size();
    return left.folded == right.folded || (!left.isFolder && right.folded.starts_with(left.folded)) ||
           left.path.compare(0, shared, right.path, 0, shared) != 0;
}

} // namespace

bool CUnpackPlan::FitsTogether() const {
    std::vector<SKey> keys(m_entries.begin(), m_entries.end());
    std::sort(keys.begin(), keys.end(),
              [](const SKey& left, const SKey& right) { return left.folded < right.folded; });
    std::size_t made = 0;
    std::size_t parts = 0;
    std::string_view before;
    for (const SKey& key : keys) {
        const std::size_t count = CountParts(key.folded);
        made += count - CountParts(SharedParts(before, key.folded));
        parts += count;
        before = key.folded;
    }
    return made <= CUnZip::MAX_ENTRIES && parts <= CUnZip::MAX_PARTS &&
           std::adjacent_find(keys.begin(), keys.end(), Conflicts) == keys.end();
}

bool CUnpackPlan::Make(const CZipDirectory& directory) {
    std::uint64_t total = 0;
    const auto isAes = [](const SZipEntry& entry) { return entry.IsAes(); };
    if (std::count_if(directory.Entries().begin(), directory.Entries().end(), isAes) >
        static_cast<std::ptrdiff_t>(CUnZip::MAX_AES_ENTRIES))
        return false;
    m_entries.reserve(directory.Entries().size());
    for (const SZipEntry& entry : directory.Entries()) {
        SPlannedEntry planned{};
        if (!PlanEntry(entry, planned) || entry.size > CUnZip::MAX_TOTAL_SIZE - total)
            return false;
        total += entry.size;
        m_entries.push_back(std::move(planned));
    }
    return FitsTogether();
}

} // namespace NSTQ::NSTQCore
