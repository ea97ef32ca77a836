// Entries for the fields of a block, several at a time.
#pragma once

#include "scan/Bits.h"
#include "scan/Kernel.h"

namespace NSTQ::Scan {

/// Puts the NULs of the fields that end at `stops` behind `out`, unless they stand there, and their entries, the
/// first of which begins at `field`. The entries for no stop go where the next fields come.
template <class TBlock, bool hasNuls>
[[gnu::always_inline]] inline void PutInBatches(Mask stops, char* out, char* field, const char** data,
                                                WORD* lengths) {
    constexpr int batch = 5;
    do {
        for (int i = 0; i < batch; ++i) {
            char* const end = out + TBlock::First(stops);
            if (!hasNuls)
                *end = 0;
            *data++ = field;
            *lengths++ = static_cast<WORD>(end - field);
            field = end + 1;
            stops &= stops - 1;
        }
    } while (stops != 0);
}

} // namespace NSTQ::Scan
