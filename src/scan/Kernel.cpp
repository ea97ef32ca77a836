#include "scan/Kernel.h"

#include "scan/KernelOf.h"

namespace NSTQ::Scan {
namespace {

constexpr SKernel kernelScalar = {EKernel::Scalar, "scalar", nullptr, nullptr, nullptr,
                                  nullptr,         nullptr,  nullptr, nullptr, nullptr};

#if defined(__x86_64__)

const SKernel* Find(EKernel kernel) {
    switch (kernel) {
    case EKernel::Scalar:
        return &kernelScalar;
    case EKernel::Sse2:
        return &kernelSse2;
    case EKernel::Avx2:
        return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") &&
                       __builtin_cpu_supports("popcnt") && __builtin_cpu_supports("pclmul")
                   ? &kernelAvx2
                   : nullptr;
    case EKernel::Avx512:
        return Find(EKernel::Avx2) != nullptr && __builtin_cpu_supports("avx512bw") &&
                       __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vbmi2")
                   ? &kernelAvx512
                   : nullptr;
    }
    return nullptr;
}

#else

const SKernel* Find(EKernel kernel) {
    return kernel == EKernel::Scalar ? &kernelScalar : nullptr;
}

#endif

constinit const SKernel* chosen = &kernelScalar;

/// Readers that are used before this has run use the scalar kernel.
[[maybe_unused]] const bool isChosen = [] {
#if defined(__x86_64__)
    __builtin_cpu_init();
#endif
    return SelectKernel(EKernel::Avx512) || SelectKernel(EKernel::Avx2) || SelectKernel(EKernel::Sse2);
}();

} // namespace

const SKernel& GetKernel() {
    return *chosen;
}

bool SelectKernel(EKernel kernel) {
    const SKernel* const found = Find(kernel);
    if (found == nullptr)
        return false;
    chosen = found;
    return true;
}

} // namespace NSTQ::Scan
