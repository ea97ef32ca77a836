// Four registers of 16 bytes, which every x86-64 processor has.
#include "scan/KernelOf.h"

#include <emmintrin.h>

namespace NSTQ::Scan {
namespace {

class CBlock {
public:
    using Bytes = __m128i;
    static constexpr std::ptrdiff_t width = blockSize;
    static constexpr bool copiesNuls = false;

    [[gnu::always_inline]] static Bytes Repeat(unsigned char byte) { return _mm_set1_epi8(static_cast<char>(byte)); }
    [[gnu::always_inline]] static CBlock Load(const unsigned char* bytes) {
        const auto* from = reinterpret_cast<const __m128i*>(bytes);
        return {_mm_loadu_si128(from), _mm_loadu_si128(from + 1), _mm_loadu_si128(from + 2),
                _mm_loadu_si128(from + 3)};
    }
    [[gnu::always_inline]] void Store(char* bytes) const {
        auto* to = reinterpret_cast<__m128i*>(bytes);
        _mm_storeu_si128(to, m_a);
        _mm_storeu_si128(to + 1, m_b);
        _mm_storeu_si128(to + 2, m_c);
        _mm_storeu_si128(to + 3, m_d);
    }
    [[gnu::always_inline]] Mask Find(Bytes byte) const {
        return Join(_mm_cmpeq_epi8(m_a, byte), _mm_cmpeq_epi8(m_b, byte), _mm_cmpeq_epi8(m_c, byte),
                    _mm_cmpeq_epi8(m_d, byte));
    }
    [[gnu::always_inline]] Mask FindQuotes() const { return Find(Repeat('"')); }
    [[gnu::always_inline]] Mask FindSpaces() const { return Find(Repeat(' ')); }
    [[gnu::always_inline]] static __m128i Controls(__m128i bytes) {
        return _mm_cmpeq_epi8(_mm_min_epu8(bytes, Repeat(0x1F)), bytes);
    }
    [[gnu::always_inline]] Mask FindControls() const {
        return Join(Controls(m_a), Controls(m_b), Controls(m_c), Controls(m_d));
    }
    [[gnu::always_inline]] Mask FindHigh() const { return Join(m_a, m_b, m_c, m_d); }
    /// The lead bytes of three-byte UTF-8 characters.
    [[gnu::always_inline]] Mask FindLeads() const { return Join(Leads(m_a), Leads(m_b), Leads(m_c), Leads(m_d)); }
    /// Bytes from 0x80 on and below `byte`, which is above it.
    [[gnu::always_inline]] Mask FindHighBelow(unsigned char byte) const {
        const __m128i bytes = Repeat(byte);
        return Join(_mm_cmplt_epi8(m_a, bytes), _mm_cmplt_epi8(m_b, bytes), _mm_cmplt_epi8(m_c, bytes),
                    _mm_cmplt_epi8(m_d, bytes));
    }
    [[gnu::always_inline]] bool HasStructure(Bytes separator) const {
        return _mm_movemask_epi8(_mm_or_si128(_mm_or_si128(Structure(m_a, separator), Structure(m_b, separator)),
                                              _mm_or_si128(Structure(m_c, separator), Structure(m_d, separator)))) !=
               0;
    }
    /// With NULs in place of `byte`.
    [[gnu::always_inline]] CBlock Without(Bytes byte) const {
        return {_mm_andnot_si128(_mm_cmpeq_epi8(m_a, byte), m_a), _mm_andnot_si128(_mm_cmpeq_epi8(m_b, byte), m_b),
                _mm_andnot_si128(_mm_cmpeq_epi8(m_c, byte), m_c), _mm_andnot_si128(_mm_cmpeq_epi8(m_d, byte), m_d)};
    }
    [[gnu::always_inline]] CBlock Replace(Bytes byte, Bytes by) const {
        const __m128i change = _mm_xor_si128(byte, by);
        return {Changed(m_a, byte, change), Changed(m_b, byte, change), Changed(m_c, byte, change),
                Changed(m_d, byte, change)};
    }
    /// The number of the lowest bit; 64 when there is none.
    [[gnu::always_inline]] static unsigned First(Mask mask) {
        return static_cast<unsigned>(__builtin_ctzll(mask | Mask{1} << 63)) + (mask == 0 ? 1U : 0U);
    }
    /// The upper ten bits of a three-byte UTF-8 character.
    [[gnu::always_inline]] static unsigned GetUpperBits(const unsigned char* from) {
        return (from[0] & 0x0FU) << 6 | (from[1] & 0x3FU);
    }
    /// Of the bits below number `bit`.
    [[gnu::always_inline]] static unsigned CountBelow(Mask mask, unsigned bit) {
        return Count(mask & ((Mask{1} << bit) - 1));
    }
    [[gnu::always_inline]] static Mask PrefixXor(Mask mask) {
        for (unsigned step = 1; step < 64; step *= 2)
            mask ^= mask << step;
        return mask;
    }
    [[gnu::always_inline]] static Mask CopyWithout(const unsigned char* from, Mask dropped, Mask mask, char* to) {
        Load(from).Store(to);
        for (unsigned count = 0; dropped != 0;) {
            const unsigned at = First(dropped) - count;
            const Mask below = (Mask{1} << at) - 1;
            mask = (mask & below) | (mask >> 1 & ~below);
            dropped &= dropped - 1;
            ++count;
            CopyHalf(from + at + count, to + at);
            if (First(dropped) - count - at > 32) [[unlikely]]
                CopyHalf(from + at + count + 32, to + at + 32);
        }
        return mask;
    }
    template <bool hasNuls>
    [[gnu::always_inline]] static void PutFields(Mask stops, char* out, char* field, const char** data,
                                                 WORD* lengths) {
        PutInBatches<CBlock, hasNuls>(stops, out, field, data, lengths);
    }

private:
    [[gnu::always_inline]] static void CopyHalf(const unsigned char* from, char* to) {
        const auto* source = reinterpret_cast<const __m128i*>(from);
        auto* target = reinterpret_cast<__m128i*>(to);
        const __m128i first = _mm_loadu_si128(source);
        const __m128i second = _mm_loadu_si128(source + 1);
        _mm_storeu_si128(target, first);
        _mm_storeu_si128(target + 1, second);
    }
    [[gnu::always_inline]] CBlock(__m128i a, __m128i b, __m128i c, __m128i d) : m_a(a), m_b(b), m_c(c), m_d(d) {}

    [[gnu::always_inline]] static __m128i Structure(__m128i bytes, Bytes separator) {
        return _mm_or_si128(Controls(bytes),
                            _mm_or_si128(_mm_cmpeq_epi8(bytes, separator), _mm_cmpeq_epi8(bytes, Repeat('"'))));
    }
    [[gnu::always_inline]] static __m128i Changed(__m128i bytes, Bytes byte, Bytes change) {
        return _mm_xor_si128(bytes, _mm_and_si128(change, _mm_cmpeq_epi8(bytes, byte)));
    }
    [[gnu::always_inline]] static __m128i Leads(__m128i bytes) {
        return _mm_cmpeq_epi8(_mm_and_si128(bytes, Repeat(0xF0)), Repeat(0xE0));
    }
    [[gnu::always_inline]] static Mask Join(__m128i a, __m128i b, __m128i c, __m128i d) {
        return Bits(a) | Bits(b) << 16 | Bits(c) << 32 | Bits(d) << 48;
    }
    [[gnu::always_inline]] static Mask Bits(__m128i bytes) {
        return static_cast<std::uint32_t>(_mm_movemask_epi8(bytes));
    }

    __m128i m_a;
    __m128i m_b;
    __m128i m_c;
    __m128i m_d;
};

/// For fields of a few bytes.
class CChunk {
public:
    using Bytes = __m128i;
    static constexpr std::ptrdiff_t width = 16;
    static constexpr bool readsPast = true;

    [[gnu::always_inline]] static Bytes Repeat(unsigned char byte) { return CBlock::Repeat(byte); }
    /// In assembly, because the compiler must not see that these loads go beyond the end of an object.
    [[gnu::always_inline]] static CChunk Load(const char* from, std::ptrdiff_t) {
        CChunk chunk;
        asm("movdqu %1, %0" : "=x"(chunk.m_bytes) : "m"(*reinterpret_cast<const char(*)[width]>(from)));
        return chunk;
    }
    [[gnu::always_inline]] static CChunk Load(const unsigned char* from) {
        CChunk chunk;
        chunk.m_bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        return chunk;
    }
    [[gnu::always_inline]] void Store(char* to) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), m_bytes); }
    [[gnu::always_inline]] Mask Find(Bytes byte) const {
        return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(m_bytes, byte)));
    }
    [[gnu::always_inline]] Mask FindEither(Bytes one, Bytes other) const {
        return static_cast<std::uint32_t>(
            _mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi8(m_bytes, one), _mm_cmpeq_epi8(m_bytes, other))));
    }
    [[gnu::always_inline]] CChunk WithNulsAs(Bytes byte) const {
        CChunk chunk;
        chunk.m_bytes = _mm_or_si128(m_bytes, _mm_and_si128(byte, _mm_cmpeq_epi8(m_bytes, _mm_setzero_si128())));
        return chunk;
    }

    [[gnu::always_inline]] Mask FindSpaces() const { return Find(Repeat(' ')); }
    [[gnu::always_inline]] Mask FindControls() const {
        return static_cast<std::uint32_t>(_mm_movemask_epi8(CBlock::Controls(m_bytes)));
    }

private:
    __m128i m_bytes;
};

static_assert(VectorBlock<CBlock> && FieldChunk<CChunk> && ColumnPiece<CChunk>);

} // namespace

constinit const SKernel kernelSse2 = CKernelOf<CBlock, CChunk, CChunk>::Make(EKernel::Sse2, "sse2");

} // namespace NSTQ::Scan
