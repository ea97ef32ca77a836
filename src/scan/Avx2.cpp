// Two registers of 32 bytes. Compiled for processors with AVX2, BMI2 and carry-less multiplication.
#include "scan/CBmiBits.h"
#include "scan/KernelOf.h"

#include <immintrin.h>

namespace NSTQ::Scan {
namespace {

/// Indexed by the mask of removed bytes among eight: the numbers of the others, in order, for the lower and for the
/// upper half of sixteen bytes.
struct SSqueezes {
    unsigned char lower[256][8];
    unsigned char upper[256][8];
};
constexpr SSqueezes squeezes = [] {
    SSqueezes all{};
    for (unsigned drop = 0; drop < 256; ++drop)
        for (unsigned bit = 0, at = 0; bit < 8; ++bit)
            if ((drop >> bit & 1) == 0) {
                all.lower[drop][at] = static_cast<unsigned char>(bit);
                all.upper[drop][at++] = static_cast<unsigned char>(bit + 8);
            }
    return all;
}();

class CBlock : public CBmiBits {
public:
    using Bytes = __m256i;
    static constexpr std::ptrdiff_t width = blockSize;
    static constexpr bool copiesNuls = false;

    [[gnu::always_inline]] static Bytes Repeat(unsigned char byte) {
        return _mm256_set1_epi8(static_cast<char>(byte));
    }
    [[gnu::always_inline]] static CBlock Load(const unsigned char* bytes) {
        const auto* from = reinterpret_cast<const __m256i*>(bytes);
        return {_mm256_loadu_si256(from), _mm256_loadu_si256(from + 1)};
    }
    [[gnu::always_inline]] void Store(char* bytes) const {
        auto* to = reinterpret_cast<__m256i*>(bytes);
        _mm256_storeu_si256(to, m_low);
        _mm256_storeu_si256(to + 1, m_high);
    }
    [[gnu::always_inline]] Mask Find(Bytes byte) const {
        return Join(_mm256_cmpeq_epi8(m_low, byte), _mm256_cmpeq_epi8(m_high, byte));
    }
    [[gnu::always_inline]] Mask FindQuotes() const { return Find(Repeat('"')); }
    [[gnu::always_inline]] Mask FindSpaces() const { return Find(Repeat(' ')); }
    [[gnu::always_inline]] static __m256i Controls(__m256i bytes) {
        return _mm256_cmpeq_epi8(_mm256_min_epu8(bytes, Repeat(0x1F)), bytes);
    }
    [[gnu::always_inline]] Mask FindControls() const { return Join(Controls(m_low), Controls(m_high)); }
    [[gnu::always_inline]] Mask FindHigh() const { return Join(m_low, m_high); }
    /// The lead bytes of three-byte UTF-8 characters.
    [[gnu::always_inline]] Mask FindLeads() const {
        const __m256i mask = Repeat(0xF0), lead = Repeat(0xE0);
        return Join(_mm256_cmpeq_epi8(_mm256_and_si256(m_low, mask), lead),
                    _mm256_cmpeq_epi8(_mm256_and_si256(m_high, mask), lead));
    }
    /// Bytes from 0x80 on and below `byte`, which is above it.
    [[gnu::always_inline]] Mask FindHighBelow(unsigned char byte) const {
        return Join(_mm256_cmpgt_epi8(Repeat(byte), m_low), _mm256_cmpgt_epi8(Repeat(byte), m_high));
    }
    [[gnu::always_inline]] bool HasStructure(Bytes separator) const {
        const __m256i any = _mm256_or_si256(Structure(m_low, separator), Structure(m_high, separator));
        return _mm256_testz_si256(any, any) == 0;
    }
    /// With NULs in place of `byte`.
    [[gnu::always_inline]] CBlock Without(Bytes byte) const {
        return {_mm256_andnot_si256(_mm256_cmpeq_epi8(m_low, byte), m_low),
                _mm256_andnot_si256(_mm256_cmpeq_epi8(m_high, byte), m_high)};
    }
    [[gnu::always_inline]] CBlock Replace(Bytes byte, Bytes by) const {
        return {_mm256_blendv_epi8(m_low, by, _mm256_cmpeq_epi8(m_low, byte)),
                _mm256_blendv_epi8(m_high, by, _mm256_cmpeq_epi8(m_high, byte))};
    }
    /// Sixteen bytes at a time, each half compressed by a row of the table.
    [[gnu::always_inline]] static Mask CopyWithout(const unsigned char* from, Mask dropped, Mask mask, char* to) {
        for (unsigned group = 0; group < 64; group += 16) {
            const unsigned drop = dropped >> group & 0xFFFF;
            const __m128i lower = Half(squeezes.lower[drop & 0xFF]);
            const __m128i upper = Half(squeezes.upper[drop >> 8]);
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + group));
            const __m128i squeezed = _mm_shuffle_epi8(bytes, _mm_unpacklo_epi64(lower, upper));
            _mm_storel_epi64(reinterpret_cast<__m128i*>(to), squeezed);
            _mm_storel_epi64(reinterpret_cast<__m128i*>(to + 8 - Count(drop & 0xFF)),
                             _mm_unpackhi_epi64(squeezed, squeezed));
            to += 16 - Count(drop);
        }
        return _pext_u64(mask, ~dropped);
    }
    template <bool hasNuls>
    [[gnu::always_inline]] static void PutFields(Mask stops, char* out, char* field, const char** data,
                                                 WORD* lengths) {
        PutInBatches<CBlock, hasNuls>(stops, out, field, data, lengths);
    }

private:
    [[gnu::always_inline]] static __m128i Half(const unsigned char* bytes) {
        return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes));
    }
    [[gnu::always_inline]] CBlock(__m256i low, __m256i high) : m_low(low), m_high(high) {}

    [[gnu::always_inline]] static __m256i Structure(__m256i bytes, Bytes separator) {
        return _mm256_or_si256(Controls(bytes), _mm256_or_si256(_mm256_cmpeq_epi8(bytes, separator),
                                                                _mm256_cmpeq_epi8(bytes, Repeat('"'))));
    }
    [[gnu::always_inline]] static Mask Join(__m256i low, __m256i high) {
        return static_cast<std::uint32_t>(_mm256_movemask_epi8(low)) |
               static_cast<Mask>(static_cast<std::uint32_t>(_mm256_movemask_epi8(high))) << 32;
    }

    __m256i m_low;
    __m256i m_high;
};

/// For fields of a few bytes.
class CChunk {
public:
    using Bytes = __m256i;
    static constexpr std::ptrdiff_t width = 32;
    static constexpr bool readsPast = true;

    [[gnu::always_inline]] static Bytes Repeat(unsigned char byte) { return CBlock::Repeat(byte); }
    /// In assembly, because the compiler must not see that these loads go beyond the end of an object.
    [[gnu::always_inline]] static CChunk Load(const char* from, std::ptrdiff_t) {
        CChunk chunk;
        asm("vmovdqu %1, %0" : "=x"(chunk.m_bytes) : "m"(*reinterpret_cast<const char(*)[width]>(from)));
        return chunk;
    }
    [[gnu::always_inline]] static CChunk Load(const unsigned char* from) {
        CChunk chunk;
        chunk.m_bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
        return chunk;
    }
    [[gnu::always_inline]] void Store(char* to) const {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), m_bytes);
    }
    [[gnu::always_inline]] Mask Find(Bytes byte) const {
        return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(m_bytes, byte)));
    }
    [[gnu::always_inline]] Mask FindEither(Bytes one, Bytes other) const {
        return static_cast<std::uint32_t>(_mm256_movemask_epi8(
            _mm256_or_si256(_mm256_cmpeq_epi8(m_bytes, one), _mm256_cmpeq_epi8(m_bytes, other))));
    }
    [[gnu::always_inline]] CChunk WithNulsAs(Bytes byte) const {
        CChunk chunk;
        chunk.m_bytes = _mm256_blendv_epi8(m_bytes, byte, _mm256_cmpeq_epi8(m_bytes, _mm256_setzero_si256()));
        return chunk;
    }

    [[gnu::always_inline]] Mask FindSpaces() const { return Find(Repeat(' ')); }
    [[gnu::always_inline]] Mask FindControls() const {
        return static_cast<std::uint32_t>(_mm256_movemask_epi8(CBlock::Controls(m_bytes)));
    }

private:
    __m256i m_bytes;
};

static_assert(VectorBlock<CBlock> && FieldChunk<CChunk> && ColumnPiece<CChunk>);

} // namespace

constinit const SKernel kernelAvx2 = CKernelOf<CBlock, CChunk, CChunk>::Make(EKernel::Avx2, "avx2");

} // namespace NSTQ::Scan
