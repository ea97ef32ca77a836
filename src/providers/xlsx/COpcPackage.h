// The OPC package of a workbook: its parts, which are the entries of a zip archive, and the relationships between
// them. External ones are never followed.
#pragma once

#include "providers/common/CXmlScanner.h"
#include "providers/zip/CZipArchive.h"

#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Providers {

struct SRelationship {
    std::string id;
    std::string type;   ///< the last segment: "worksheet", "sharedStrings"
    std::string target; ///< the part's name, resolved
    bool isExternal;
};

class COpcPackage {
public:
    /// With `readsAhead` large parts may be read by a thread; then `input` is guarded. Throws CSourceError.
    COpcPackage(std::shared_ptr<IRandomAccess> input, bool readsAhead)
        : m_zip(std::move(input)), m_readsAhead(readsAhead) {}

    bool HasPart(const std::string& part) const { return m_zip.Find(part) != nullptr; }
    /// The compressed size of an existing part in bytes.
    std::uint64_t GetPackedSize(const std::string& part) const { return m_zip.Find(part)->packedSize; }
    /// Whether an existing part is large enough for a thread, and one is allowed.
    bool IsReadAhead(const std::string& part) const;
    /// Decompressed by a thread if IsReadAhead. A part that is kept in memory has tighter limits than one that is
    /// streamed.
    CXmlScanner OpenPart(const std::string& part) const;
    CXmlScanner OpenStreamedPart(const std::string& part) const;
    /// A streamed part without a thread.
    CXmlScanner OpenPlainPart(const std::string& part) const;
    /// The relationships of a part, or of the package for an empty name; none when there is no such list.
    std::vector<SRelationship> ReadRelationships(const std::string& part) const;

private:
    std::unique_ptr<IByteStream> Open(const std::string& part, const SInflateLimits& limits) const;
    std::unique_ptr<IByteStream> OpenAhead(const std::string& part, const SInflateLimits& limits) const;

    CZipArchive m_zip;
    bool m_readsAhead;
};

} // namespace NSTQ::Providers
