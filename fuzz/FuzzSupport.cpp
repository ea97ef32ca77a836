#include "FuzzSupport.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

namespace {

std::size_t readLimit = 0; // 0: no faults
std::size_t readsUntilFailure = 0;

} // namespace

extern "C" {

ssize_t __real_read(int file, void* buffer, std::size_t size);

ssize_t __wrap_read(int file, void* buffer, std::size_t size) {
    if (readLimit == 0)
        return __real_read(file, buffer, size);
    if (readsUntilFailure > 0 && --readsUntilFailure == 0) {
        errno = EIO;
        return -1;
    }
    return __real_read(file, buffer, std::min(size, readLimit));
}

} // extern "C"

namespace NSTQ::Fuzz {

void Require(bool holds, const char* claim) {
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", claim);
    std::abort();
}

CMemoryFile::CMemoryFile(std::string_view bytes)
    : m_iFile(::memfd_create("fuzz", MFD_CLOEXEC)), m_strPath("/proc/self/fd/" + std::to_string(m_iFile)) {
    Require(m_iFile >= 0 && ::write(m_iFile, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()),
            "a file in memory can be made");
}

CMemoryFile::~CMemoryFile() {
    ::close(m_iFile);
}

CReadFaults::CReadFaults(std::size_t size, std::size_t failing) {
    readLimit = size;
    readsUntilFailure = failing;
}

CReadFaults::~CReadFaults() {
    readLimit = 0;
}

void CheckRow(const char* const* fields, const NSTQ::WORD* lengths, std::size_t count, NSTQ::DWORD maxField,
              std::string_view lineBuffer) {
    const char* free = lineBuffer.data();
    const char* const end = lineBuffer.data() + lineBuffer.size();
    for (std::size_t i = 0; i < count; ++i) {
        Require(lengths[i] <= maxField, "a field is cut to its limit");
        Require(fields[i] >= free && fields[i] < end && end - fields[i] > lengths[i],
                "fields stand one after another in the line buffer");
        Require(fields[i][lengths[i]] == '\0', "a NUL stands at the field's length");
        free = fields[i] + lengths[i] + 1;
    }
}

} // namespace NSTQ::Fuzz
