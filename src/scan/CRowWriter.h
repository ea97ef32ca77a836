// Copies and examines the fields of CSV rows in one pass.
//
// A field is copied in chunks as if it needed no quotes. If a chunk contains a byte that requires them, it starts
// again with quotes; a quote inside is doubled by copying the rest of the chunk again from there, one byte further.
//
// Invariant: the bytes from the start of the row to m_pOut are what the scalar writer would have written.
#pragma once

#include "scan/Bits.h"
#include "scan/Kernel.h"

namespace NSTQ::Scan {

template <class TChunk>
class CRowWriter {
public:
    [[gnu::always_inline]] explicit CRowWriter(const SRow& row)
        : m_separators(TChunk::Repeat(row.cSeparator)), m_quotes(TChunk::Repeat(QUOTE)), m_cPre(row.cPre),
          m_pOut(row.pOut) {}

    [[gnu::always_inline]] void Write(SRow& row) {
        if (row.bQuoteLineEnds)
            WriteFields<true>(row);
        else
            WriteFields<false>(row);
    }

private:
    static constexpr unsigned char QUOTE = '"';
    static constexpr std::ptrdiff_t CHUNK = TChunk::SIZE;
    /// What a field may need in addition to its bytes: separator, quotes and the rest of two chunks.
    static constexpr std::ptrdiff_t SLACK = 3 + 2 * CHUNK;

    template <bool quoteLineEnds>
    [[gnu::always_inline]] void WriteFields(SRow& row) {
        for (; row.dwField < row.dwFields; ++row.dwField) {
            const std::ptrdiff_t size = row.pLen[row.dwField];
            const std::ptrdiff_t room = row.pEnd - m_pOut - SLACK;
            // A field without bytes may have a null address.
            const char* const field = size == 0 ? m_pOut : row.ppData[row.dwField];
            if (size > room || (TChunk::READS_PAST && !IsReadablePast(field + size)))
                break;
            char* const start = m_pOut;
            *m_pOut = static_cast<char>(row.cSeparator);
            m_pOut += row.dwField > 0 ? 1 : 0;
            if (CopyBare<quoteLineEnds>(field, size))
                continue;
            m_pOut = start + (row.dwField > 0 ? 1 : 0);
            if (2 * size > room) {
                m_pOut = start;
                break;
            }
            CopyQuoted(field, size);
        }
        row.pOut = m_pOut;
    }

    /// Whether the bytes after the end of a field can be read safely, as far as the loads reach.
    [[gnu::always_inline]] static bool IsReadablePast(const char* end) {
        constexpr std::uintptr_t page = 4096;
        return (reinterpret_cast<std::uintptr_t>(end) - 1) % page < page - 2 * CHUNK;
    }

    /// Whether the first `count` bytes contain one for which a field needs quotes.
    template <bool quoteLineEnds>
    [[gnu::always_inline]] bool NeedsQuotes(const TChunk& chunk, std::ptrdiff_t count) const {
        Mask special = chunk.Find(m_separators) | chunk.Find(m_quotes);
        if constexpr (quoteLineEnds) {
            if ((chunk.FindControls() & UpTo(count)) != 0) [[unlikely]]
                special |= chunk.Find(TChunk::Repeat('\r')) | chunk.Find(TChunk::Repeat('\n')) |
                           chunk.Find(TChunk::Repeat(m_cPre));
        }
        return (special & UpTo(count)) != 0;
    }

    /// False, somewhere inside the field, when it needs quotes.
    template <bool quoteLineEnds>
    [[gnu::always_inline]] bool CopyBare(const char* from, std::ptrdiff_t left) {
        for (; left > CHUNK; from += CHUNK, left -= CHUNK, m_pOut += CHUNK) {
            const TChunk chunk = TChunk::Load(from, CHUNK);
            chunk.Store(m_pOut);
            if (NeedsQuotes<quoteLineEnds>(chunk, CHUNK))
                return false;
        }
        const TChunk chunk = TChunk::Load(from, left);
        chunk.Store(m_pOut);
        m_pOut += left;
        return !NeedsQuotes<quoteLineEnds>(chunk, left);
    }

    [[gnu::always_inline]] void CopyQuoted(const char* from, std::ptrdiff_t left) {
        *m_pOut++ = QUOTE;
        for (; left > 0; from += CHUNK, left -= CHUNK) {
            const std::ptrdiff_t size = left < CHUNK ? left : CHUNK;
            const TChunk chunk = TChunk::Load(from, size);
            chunk.Store(m_pOut);
            for (Mask quotes = chunk.Find(m_quotes) & UpTo(size); quotes != 0; quotes &= quotes - 1) {
                const std::ptrdiff_t at = __builtin_ctzll(quotes);
                ++m_pOut;
                TChunk::Load(from + at, size - at).Store(m_pOut + at);
            }
            m_pOut += size;
        }
        *m_pOut++ = QUOTE;
    }

    /// The lowest bits, up to as many as a chunk has.
    [[gnu::always_inline]] static Mask UpTo(std::ptrdiff_t count) {
        return count == 64 ? ~Mask{0} : (Mask{1} << count) - 1;
    }

    const typename TChunk::Bytes m_separators;
    const typename TChunk::Bytes m_quotes;
    const unsigned char m_cPre;
    char* m_pOut;
};

} // namespace NSTQ::Scan
