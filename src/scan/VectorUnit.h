// What a kernel needs of a vector unit: blocks of 64 bytes, masks of one bit per byte, and the contracts of the types
// that stand for its registers. A kernel for another unit is a source with these types, which ends like Sse2.cpp, a
// line in Kernel.cpp that tells whether the processor has the unit, and one in CMakeLists.txt with its options.
//
// The sources that include this are compiled for different processors. Everything in it is always inlined, so that
// the linker cannot use the code for one processor on all; for the same reason they include no standard header with
// functions.
#pragma once

#include "scan/Kernel.h"

#include <cstddef>
#include <cstdint>

namespace NSTQ::Scan {

using Mask = std::uint64_t;

inline constexpr std::ptrdiff_t blockSize = 64;

/// The bits through the lowest set bit; all if none is set.
[[gnu::always_inline]] constexpr Mask UpToFirst(Mask mask) {
    return mask ^ (mask - 1);
}

/// The bits below the lowest set bit; all if none is set.
[[gnu::always_inline]] constexpr Mask BelowFirst(Mask mask) {
    return ~mask & (mask - 1);
}

/// One more than the number of the highest set bit, which must exist.
[[gnu::always_inline]] constexpr unsigned BehindLast(Mask mask) {
    return 64U - static_cast<unsigned>(__builtin_clzll(mask));
}

[[gnu::always_inline]] constexpr unsigned Count(Mask mask) {
    return static_cast<unsigned>(__builtin_popcountll(mask));
}

template <class TLeft, class TRight>
concept Same = __is_same(TLeft, TRight);

/// A block of text in the registers of a vector unit; `Bytes` is one register.
template <class TBlock>
concept VectorBlock = requires(const TBlock block, typename TBlock::Bytes bytes, unsigned char byte,
                               const unsigned char* from, char* to, Mask mask, unsigned bit, const char** data,
                               WORD* lengths) {
    requires TBlock::width == blockSize;
    /// Whether CopyWithout puts NULs in place of the stops, so that PutFields need not.
    requires Same<decltype(TBlock::copiesNuls), const bool>;

    /// Each byte of a register the same.
    { TBlock::Repeat(byte) } -> Same<typename TBlock::Bytes>;
    // From and to places of any alignment.
    { TBlock::Load(from) } -> Same<TBlock>;
    { block.Store(to) } -> Same<void>;

    // Where the bytes of one kind stand: `bytes`, as Repeat gives it; control bytes, below the space; bytes from
    // 0x80 on; 0xE0 to 0xEF, which lead three bytes in UTF-8; bytes from 0x80 on and below `byte`, which is above
    // 0x80.
    { block.Find(bytes) } -> Same<Mask>;
    { block.FindQuotes() } -> Same<Mask>;
    { block.FindSpaces() } -> Same<Mask>;
    { block.FindControls() } -> Same<Mask>;
    { block.FindHigh() } -> Same<Mask>;
    { block.FindLeads() } -> Same<Mask>;
    { block.FindHighBelow(byte) } -> Same<Mask>;
    /// Whether there are control bytes, quotes or `bytes`: faster than to ask where.
    { block.HasStructure(bytes) } -> Same<bool>;
    /// With NULs in place of `bytes`.
    { block.Without(bytes) } -> Same<TBlock>;
    /// With the second ones in place of the first ones.
    { block.Replace(bytes, bytes) } -> Same<TBlock>;

    /// The number of the lowest bit; 64 when there is none.
    { TBlock::First(mask) } -> Same<unsigned>;
    /// Of the bits below number `bit`.
    { TBlock::CountBelow(mask, bit) } -> Same<unsigned>;
    /// Each bit tells whether the number of bits up to and with it is odd.
    { TBlock::PrefixXor(mask) } -> Same<Mask>;
    /// The upper ten bits of a character of three bytes in UTF-8; a byte behind it may be looked at.
    { TBlock::GetUpperBits(from) } -> Same<unsigned>;

    /// Copies the block at `from` without the bytes of the first mask to `to`, where it writes blockSize bytes;
    /// bytes up to a block behind it may be looked at. Gives the second mask without the bits of the first.
    { TBlock::CopyWithout(from, mask, mask, to) } -> Same<Mask>;
    /// Entries for the fields whose ends are the bits of `mask` (one at least) behind `to`. The first one begins
    /// at the second `to`, each other one behind the end of the one before. Puts the NULs at the ends, unless
    /// they stand there; up to entrySlack entries behind the last one may be written.
    { TBlock::template PutFields<true>(mask, to, to, data, lengths) } -> Same<void>;
    { TBlock::template PutFields<false>(mask, to, to, data, lengths) } -> Same<void>;
};

/// A piece of a column of fixed-length text, `width` bytes; a block is one as well.
template <class TPiece>
concept ColumnPiece = requires(const TPiece piece, const unsigned char* from, char* to) {
    requires TPiece::width <= blockSize;
    { TPiece::Load(from) } -> Same<TPiece>;
    { piece.Store(to) } -> Same<void>;
    { piece.FindSpaces() } -> Same<Mask>;
    { piece.FindControls() } -> Same<Mask>;
};

/// A piece of a field that is written, `width` bytes.
template <class TChunk>
concept FieldChunk = requires(const TChunk chunk, typename TChunk::Bytes bytes, unsigned char byte, const char* from,
                              std::ptrdiff_t size, char* to) {
    requires TChunk::width <= blockSize;
    /// Whether Load looks at all bytes of the piece; else it looks at `size` of them, and the rest are NULs.
    requires Same<decltype(TChunk::readsPast), const bool>;
    { TChunk::Load(from, size) } -> Same<TChunk>;
    { TChunk::Repeat(byte) } -> Same<typename TChunk::Bytes>;
    { chunk.Store(to) } -> Same<void>;
    { chunk.Find(bytes) } -> Same<Mask>;
    { chunk.FindEither(bytes, bytes) } -> Same<Mask>;
    { chunk.FindControls() } -> Same<Mask>;
    /// With `bytes` in place of NULs.
    { chunk.WithNulsAs(bytes) } -> Same<TChunk>;
};

/// PutFields for units without a faster way: several entries at a time. Surplus entries are overwritten by those of
/// the next fields.
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
