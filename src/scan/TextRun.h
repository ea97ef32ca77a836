// Runs of text without control bytes.
#pragma once

#include "scan/Bits.h"
#include "scan/Kernel.h"

namespace NSTQ::Scan {

/// As SKernel::pCopyText. Every byte written is one of the `size` that there is room for.
template <class TBlock>
[[gnu::always_inline]] inline DWORD CopyText(const unsigned char* from, DWORD size, char* to, unsigned char stop) {
    constexpr unsigned char space = 0x20;
    const typename TBlock::Bytes stops = TBlock::Repeat(stop);
    DWORD count = 0;
    for (; size - count >= BLOCK; count += BLOCK) {
        const TBlock block = TBlock::Load(from + count);
        block.Store(to + count);
        const Mask ends = block.Find(stops) | block.FindControls();
        if (ends != 0)
            return count + TBlock::First(ends);
    }
    for (; count < size && from[count] >= space && from[count] != stop; ++count)
        to[count] = static_cast<char>(from[count]);
    return count;
}

} // namespace NSTQ::Scan
