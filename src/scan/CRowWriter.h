// Copies and examines the fields of CSV rows in one pass.
//
// A field is copied in chunks as if it needed no quotes. If a chunk contains a byte that requires them, it starts
// again with quotes; a quote inside is doubled by copying the rest of the chunk again from there, one byte further.
//
// Invariant: the bytes from the start of the row to m_out are what the scalar writer would have written.
#pragma once

#include "scan/VectorUnit.h"

namespace NSTQ::Scan {

template <class TChunk>
class CRowWriter {
public:
    [[gnu::always_inline]] explicit CRowWriter(const SRow& row)
        : m_separators(TChunk::Repeat(row.separator)), m_quotes(TChunk::Repeat(quote)), m_pre(row.pre),
          m_out(row.out) {}

    [[gnu::always_inline]] void Write(SRow& row) {
        if (row.quotesLineEnds)
            WriteFields<true>(row);
        else
            WriteFields<false>(row);
    }

private:
    static constexpr unsigned char quote = '"';
    static constexpr std::ptrdiff_t chunkSize = TChunk::width;
    /// What a field may need in addition to its bytes: separator, quotes and the rest of two chunks.
    static constexpr std::ptrdiff_t slack = 3 + 2 * chunkSize;

    template <bool quoteLineEnds>
    [[gnu::always_inline]] void WriteFields(SRow& row) {
        for (; row.field < row.fieldCount; ++row.field) {
            const std::ptrdiff_t size = row.lengths[row.field];
            const std::ptrdiff_t room = row.end - m_out - slack;
            // A field without bytes may have a null address.
            const char* const field = size == 0 ? m_out : row.data[row.field];
            if (size > room || (TChunk::readsPast && !IsReadablePast(field + size)))
                break;
            char* const start = m_out;
            *m_out = static_cast<char>(row.separator);
            m_out += row.field > 0 ? 1 : 0;
            if (CopyBare<quoteLineEnds>(field, size))
                continue;
            m_out = start + (row.field > 0 ? 1 : 0);
            if (2 * size > room) {
                m_out = start;
                break;
            }
            CopyQuoted(field, size);
        }
        row.out = m_out;
    }

    /// Whether the bytes after the end of a field can be read safely, as far as the loads reach.
    [[gnu::always_inline]] static bool IsReadablePast(const char* end) {
        constexpr std::uintptr_t page = 4096;
        return (reinterpret_cast<std::uintptr_t>(end) - 1) % page < page - 2 * chunkSize;
    }

    /// Whether the first `count` bytes contain one for which a field needs quotes.
    template <bool quoteLineEnds>
    [[gnu::always_inline]] bool NeedsQuotes(const TChunk& chunk, std::ptrdiff_t count) const {
        Mask special = chunk.Find(m_separators) | chunk.Find(m_quotes);
        if constexpr (quoteLineEnds) {
            if ((chunk.FindControls() & UpTo(count)) != 0) [[unlikely]]
                special |= chunk.Find(TChunk::Repeat('\r')) | chunk.Find(TChunk::Repeat('\n')) |
                           chunk.Find(TChunk::Repeat(m_pre));
        }
        return (special & UpTo(count)) != 0;
    }

    /// False, somewhere inside the field, when it needs quotes.
    template <bool quoteLineEnds>
    [[gnu::always_inline]] bool CopyBare(const char* from, std::ptrdiff_t left) {
        for (; left > chunkSize; from += chunkSize, left -= chunkSize, m_out += chunkSize) {
            const TChunk chunk = TChunk::Load(from, chunkSize);
            chunk.Store(m_out);
            if (NeedsQuotes<quoteLineEnds>(chunk, chunkSize))
                return false;
        }
        const TChunk chunk = TChunk::Load(from, left);
        chunk.Store(m_out);
        m_out += left;
        return !NeedsQuotes<quoteLineEnds>(chunk, left);
    }

    [[gnu::always_inline]] void CopyQuoted(const char* from, std::ptrdiff_t left) {
        *m_out++ = quote;
        for (; left > 0; from += chunkSize, left -= chunkSize) {
            const std::ptrdiff_t size = left < chunkSize ? left : chunkSize;
            const TChunk chunk = TChunk::Load(from, size);
            chunk.Store(m_out);
            for (Mask quotes = chunk.Find(m_quotes) & UpTo(size); quotes != 0; quotes &= quotes - 1) {
                const std::ptrdiff_t at = __builtin_ctzll(quotes);
                ++m_out;
                TChunk::Load(from + at, size - at).Store(m_out + at);
            }
            m_out += size;
        }
        *m_out++ = quote;
    }

    /// The lowest bits, up to as many as a chunk has.
    [[gnu::always_inline]] static Mask UpTo(std::ptrdiff_t count) {
        return count == 64 ? ~Mask{0} : (Mask{1} << count) - 1;
    }

    const typename TChunk::Bytes m_separators;
    const typename TChunk::Bytes m_quotes;
    const unsigned char m_pre;
    char* m_out;
};

} // namespace NSTQ::Scan
