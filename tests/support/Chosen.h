// What a test chooses for its time: a kernel of src/scan, an ANSI code page. The one before comes back.
#pragma once

#include "scan/Kernel.h"
#include "tqcAccess/CodePage.h"

#include <vector>

// Under the address sanitizer, and with the counters of `make coverage`, sizes and times say little.
#if defined(__SANITIZE_ADDRESS__)
#define TQC_TEST_INSTRUMENTED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TQC_TEST_INSTRUMENTED 1
#endif
#endif

namespace NSTQ::Tests {

#if defined(TQC_TEST_INSTRUMENTED)
inline constexpr bool isInstrumented = true;
#else
inline constexpr bool isInstrumented = false;
#endif

/// While this lives another kernel is in use.
class CKernel {
public:
    CKernel() {} // not defaulted: clang++ 14 makes no constant of such a class
    explicit CKernel(Scan::EKernel kernel) { Scan::SelectKernel(kernel); }
    CKernel(const CKernel&) = delete;
    CKernel& operator=(const CKernel&) = delete;
    ~CKernel() { Scan::SelectKernel(m_former); }

private:
    const Scan::EKernel m_former = Scan::GetKernel().kernel;
};

/// Those that this machine has, the plain one first.
inline std::vector<Scan::EKernel> Kernels() {
    const CKernel former;
    std::vector<Scan::EKernel> all;
    for (const Scan::EKernel kernel : Scan::allKernels)
        if (Scan::SelectKernel(kernel))
            all.push_back(kernel);
    return all;
}

class CAnsiPage {
public:
    explicit CAnsiPage(unsigned page) : m_saved(Platform::GetAnsiCodePage()) { Platform::SetAnsiCodePage(page); }
    CAnsiPage(const CAnsiPage&) = delete;
    CAnsiPage& operator=(const CAnsiPage&) = delete;
    ~CAnsiPage() { Platform::SetAnsiCodePage(m_saved); }

private:
    unsigned m_saved;
};

} // namespace NSTQ::Tests
