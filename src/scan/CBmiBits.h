// Bit operations of the kernels with BMI2 and carry-less multiplication.
#pragma once

#include "scan/VectorUnit.h"

#include <immintrin.h>

namespace NSTQ::Scan {

class CBmiBits {
public:
    /// The number of the lowest set bit; 64 if none is set.
    [[gnu::always_inline]] static unsigned First(Mask mask) { return static_cast<unsigned>(_tzcnt_u64(mask)); }
    /// Of the bits below number `bit`.
    [[gnu::always_inline]] static unsigned CountBelow(Mask mask, unsigned bit) { return Count(_bzhi_u64(mask, bit)); }
    /// Each bit of the result is the parity of the bits through it.
    [[gnu::always_inline]] static Mask PrefixXor(Mask mask) {
        const __m128i product =
            _mm_clmulepi64_si128(_mm_set_epi64x(0, static_cast<long long>(mask)), _mm_set1_epi8('\xFF'), 0);
        return static_cast<Mask>(_mm_cvtsi128_si64(product));
    }
    /// The upper ten bits of a three-byte UTF-8 character.
    [[gnu::always_inline]] static unsigned GetUpperBits(const unsigned char* from) {
        std::uint32_t bytes = 0;
        __builtin_memcpy(&bytes, from, sizeof bytes);
        return _pext_u32(__builtin_bswap32(bytes), 0x0F3F0000);
    }
};

} // namespace NSTQ::Scan
