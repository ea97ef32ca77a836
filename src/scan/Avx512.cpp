// One register of 64 bytes, with comparisons that give masks and an instruction that removes bytes. Compiled for
// processors with AVX-512 VBMI2.
#include "scan/CBmiBits.h"
#include "scan/KernelOf.h"

#include <immintrin.h>

namespace NSTQ::Scan {
namespace {

struct SNumbers {
    unsigned char bytes[64];
};
constexpr SNumbers numbers = [] {
    SNumbers all{};
    for (unsigned i = 0; i < 64; ++i)
        all.bytes[i] = static_cast<unsigned char>(i);
    return all;
}();

class CBlock : public CBmiBits {
public:
    using Bytes = __m512i;
    static constexpr std::ptrdiff_t width = blockSize;
    static constexpr bool copiesNuls = true;

    [[gnu::always_inline]] static Bytes Repeat(unsigned char byte) {
        return _mm512_set1_epi8(static_cast<char>(byte));
    }
    [[gnu::always_inline]] static CBlock Load(const unsigned char* bytes) {
        return CBlock(_mm512_loadu_si512(bytes));
    }
    [[gnu::always_inline]] void Store(char* bytes) const { _mm512_storeu_si512(bytes, m_bytes); }
    [[gnu::always_inline]] Mask Find(Bytes byte) const { return _mm512_cmpeq_epi8_mask(m_bytes, byte); }
    [[gnu::always_inline]] Mask FindQuotes() const { return Find(Repeat('"')); }
    [[gnu::always_inline]] Mask FindSpaces() const { return Find(Repeat(' ')); }
    [[gnu::always_inline]] Mask FindControls() const { return _mm512_cmplt_epu8_mask(m_bytes, Repeat(' ')); }
    [[gnu::always_inline]] Mask FindHigh() const { return _mm512_movepi8_mask(m_bytes); }
    /// The lead bytes of three-byte UTF-8 characters.
    [[gnu::always_inline]] Mask FindLeads() const {
        return _mm512_cmpeq_epi8_mask(_mm512_and_si512(m_bytes, Repeat(0xF0)), Repeat(0xE0));
    }
    /// Bytes from 0x80 on and below `byte`, which is above it.
    [[gnu::always_inline]] Mask FindHighBelow(unsigned char byte) const {
        return _mm512_cmplt_epi8_mask(m_bytes, Repeat(byte));
    }
    [[gnu::always_inline]] bool HasStructure(Bytes separator) const {
        return (Find(separator) | FindQuotes() | FindControls()) != 0;
    }
    /// With NULs in place of `byte`.
    [[gnu::always_inline]] CBlock Without(Bytes byte) const {
        return CBlock(_mm512_maskz_mov_epi8(_mm512_cmpneq_epi8_mask(m_bytes, byte), m_bytes));
    }
    [[gnu::always_inline]] CBlock Replace(Bytes byte, Bytes by) const {
        return CBlock(_mm512_mask_mov_epi8(m_bytes, Find(byte), by));
    }
    [[gnu::always_inline]] static Mask CopyWithout(const unsigned char* from, Mask dropped, Mask stops, char* to) {
        const __m512i bytes = _mm512_maskz_loadu_epi8(~stops, from);
        CBlock(_mm512_maskz_compress_epi8(~dropped, bytes)).Store(to);
        return _pext_u64(stops, ~dropped);
    }
    /// Sixteen at a time, which is all in most blocks; surplus entries are overwritten by those of the next fields.
    template <bool hasNuls>
    [[gnu::always_inline]] static void PutFields(Mask stops, char* out, char* field, const char** data,
                                                 WORD* lengths) {
        // The first field began before the block: its entry is written last.
        __m512i starts = _mm512_maskz_compress_epi8(stops << 1 | 1, Numbers());
        __m512i sizes = _mm512_sub_epi8(_mm512_maskz_compress_epi8(stops, Numbers()), starts);
        const __m512i base = _mm512_set1_epi64(reinterpret_cast<long long>(out));
        const auto count = static_cast<std::ptrdiff_t>(Count(stops));
        for (std::ptrdiff_t put = 0; put < count; put += 16) {
            const __m128i some = _mm512_castsi512_si128(starts);
            _mm512_storeu_si512(data + put, _mm512_add_epi64(base, _mm512_cvtepu8_epi64(some)));
            _mm512_storeu_si512(data + put + 8,
                                _mm512_add_epi64(base, _mm512_cvtepu8_epi64(_mm_unpackhi_epi64(some, some))));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(lengths + put),
                                _mm256_cvtepu8_epi16(_mm512_castsi512_si128(sizes)));
            starts = _mm512_alignr_epi64(starts, starts, 2);
            sizes = _mm512_alignr_epi64(sizes, sizes, 2);
        }
        data[0] = field;
        lengths[0] = static_cast<WORD>(out + First(stops) - field);
    }

private:
    [[gnu::always_inline]] explicit CBlock(__m512i bytes) : m_bytes(bytes) {}

    /// 0, 1, 2 and so on.
    [[gnu::always_inline]] static __m512i Numbers() { return _mm512_loadu_si512(numbers.bytes); }

    __m512i m_bytes;
};

/// The bytes of a field and none after them.
class CChunk {
public:
    using Bytes = __m512i;
    static constexpr std::ptrdiff_t width = 64;
    static constexpr bool readsPast = false;

    [[gnu::always_inline]] static Bytes Repeat(unsigned char byte) { return CBlock::Repeat(byte); }
    [[gnu::always_inline]] static CChunk Load(const char* from, std::ptrdiff_t size) {
        CChunk chunk;
        chunk.m_bytes = _mm512_maskz_loadu_epi8(_bzhi_u64(~0ULL, static_cast<unsigned>(size)), from);
        return chunk;
    }
    [[gnu::always_inline]] void Store(char* to) const { _mm512_storeu_si512(to, m_bytes); }
    [[gnu::always_inline]] Mask Find(Bytes byte) const { return _mm512_cmpeq_epi8_mask(m_bytes, byte); }
    [[gnu::always_inline]] Mask FindEither(Bytes one, Bytes other) const { return Find(one) | Find(other); }
    [[gnu::always_inline]] CChunk WithNulsAs(Bytes byte) const {
        CChunk chunk;
        chunk.m_bytes = _mm512_mask_mov_epi8(m_bytes, Find(_mm512_setzero_si512()), byte);
        return chunk;
    }
    [[gnu::always_inline]] Mask FindControls() const { return _mm512_cmplt_epu8_mask(m_bytes, Repeat(' ')); }

private:
    __m512i m_bytes;
};

/// For columns: half a register, whose loads and stores cross cache lines less often.
class CColumnChunk {
public:
    static constexpr std::ptrdiff_t width = 32;

    [[gnu::always_inline]] static CColumnChunk Load(const unsigned char* from) {
        CColumnChunk chunk;
        chunk.m_bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
        return chunk;
    }
    [[gnu::always_inline]] void Store(char* to) const {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), m_bytes);
    }
    [[gnu::always_inline]] Mask FindSpaces() const { return _mm256_cmpeq_epi8_mask(m_bytes, _mm256_set1_epi8(' ')); }
    [[gnu::always_inline]] Mask FindControls() const {
        return _mm256_cmplt_epu8_mask(m_bytes, _mm256_set1_epi8(' '));
    }

private:
    __m256i m_bytes;
};

static_assert(VectorBlock<CBlock> && FieldChunk<CChunk> && ColumnPiece<CColumnChunk>);

} // namespace

constinit const SKernel kernelAvx512 = CKernelOf<CBlock, CChunk, CColumnChunk>::Make(EKernel::Avx512, "avx512");

} // namespace NSTQ::Scan
