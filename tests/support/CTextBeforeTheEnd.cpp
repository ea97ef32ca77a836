#include "support/CTextBeforeTheEnd.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/mman.h>
#endif

namespace NSTQ::Tests {

#if defined(_WIN32)
CTextBeforeTheEnd::CTextBeforeTheEnd()
    : m_memory(
          static_cast<char*>(::VirtualAlloc(nullptr, size + pageSize, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE))) {
    ::DWORD before = 0;
    ::VirtualProtect(m_memory + size, pageSize, PAGE_NOACCESS, &before);
}

CTextBeforeTheEnd::~CTextBeforeTheEnd() {
    ::VirtualFree(m_memory, 0, MEM_RELEASE);
}
#else
CTextBeforeTheEnd::CTextBeforeTheEnd()
    : m_memory(static_cast<char*>(
          ::mmap(nullptr, size + pageSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
    ::mprotect(m_memory + size, pageSize, PROT_NONE);
}

CTextBeforeTheEnd::~CTextBeforeTheEnd() {
    ::munmap(m_memory, size + pageSize);
}
#endif

} // namespace NSTQ::Tests
