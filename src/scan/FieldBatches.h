// Entries for the fields of a block, several at a time.
#pragma once

#include "scan/Bits.h"
#include "scan/Kernel.h"

namespace NSTQ::Scan {

/// Writes the NULs of the fields that end at `stops` after `out`, unless they are there already, and their entries;
/// the first field begins at `field`. Surplus entries are overwritten by those of the next fields.
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
