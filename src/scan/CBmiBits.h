// What the kernels with BMI2 and carry-less multiplication count with.
#pragma once

#include "scan/Bits.h"

#include <immintrin.h>

namespace NSTQ::Scan {

class CBmiBits {
public:
    /// The number of the lowest bit; 64 when there is none.
    [[gnu::always_inline]] static unsigned First(Mask mask) { return static_cast<unsigned>(_tzcnt_u64(mask)); }
    /// Of the bits below number `bit`.
    [[gnu::always_inline]] static unsigned CountBelow(Mask mask, unsigned bit) { return Count(_bzhi_u64(mask, bit)); }
    /// Each bit tells whether the number of bits up to and with it is odd.
    [[gnu::always_inline]] static Mask PrefixXor(Mask mask) {
        const __m128i product =
            _mm_clmulepi64_si128(_mm_set_epi64x(0, static_cast<long long>(mask)), _mm_set1_epi8('\xFF'), 0);
        return static_cast<Mask>(_mm_cvtsi128_si64(product));
    }
    /// The upper ten bits of a character of three bytes in UTF-8.
    [[gnu::always_inline]] static unsigned GetUpperBits(const unsigned char* from) {
        std::uint32_t bytes = 0;
        __builtin_memcpy(&bytes, from, sizeof bytes);
        return _pext_u32(__builtin_bswap32(bytes), 0x0F3F0000);
    }
};

} // namespace NSTQ::Scan
