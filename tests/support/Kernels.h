// The kernels of src/scan in tests.
#pragma once

#include "scan/Kernel.h"

#include <vector>

namespace NSTQ::Tests {

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

} // namespace NSTQ::Tests
