// The kernels, each in a source that is compiled for its processors.
#pragma once

#include "scan/Kernel.h"

namespace NSTQ::Scan {

extern const SKernel kernelSse2;
extern const SKernel kernelAvx2;
extern const SKernel kernelAvx512;

} // namespace NSTQ::Scan
