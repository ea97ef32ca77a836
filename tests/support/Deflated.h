// Zip entries with compressed content.
#pragma once

#include "support/ZipWriter.h"

#include <zlib.h>

namespace NSTQ::Tests {

/// The same entry with its content deflated.
inline SZipEntryText Deflated(SZipEntryText entry) {
    uLongf size = compressBound(static_cast<uLong>(entry.content.size()));
    std::string packed(size, '\0');
    compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(entry.content.data()),
             static_cast<uLong>(entry.content.size()));
    entry.packed = packed.substr(2, size - 6); // without the zlib header and checksum
    entry.method = 8;
    return entry;
}

} // namespace NSTQ::Tests
