// Copies and examines the fields of CSV rows in one pass.
//
// A field is copied in chunks as if it needed no quotes. If a chunk contains a byte that requires them, it starts
// again with quotes; a quote inside is doubled by copying the rest of the chunk again from there, one byte further.
//
// Fields that stand together, one after another with a NUL between them, as the readers return them, are copied as
// one text whose NULs become separators, up to a field that needs quotes.
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
    static constexpr std::size_t longField = 64;
    /// What a field may need in addition to its bytes: separator, quotes and the rest of two chunks.
    static constexpr std::ptrdiff_t slack = 3 + 2 * chunkSize;

    template <bool quoteLineEnds>
    [[gnu::always_inline]] void WriteFields(SRow& row) {
        if (AreTogether(row))
            while (row.field < row.fieldCount && CopyTogether<quoteLineEnds>(row) && WriteQuoted(row)) {
            }
        while (row.field < row.fieldCount && WriteField<quoteLineEnds>(row)) {
        }
        row.out = m_out;
    }

    /// Whether a NUL and the next field follow each field. Not so for long fields, for which it would not pay.
    [[gnu::always_inline]] static bool AreTogether(const SRow& row) {
        // These would be found where there is no field.
        if (row.fieldCount == 0 || row.separator == 0 || (row.quotesLineEnds && row.pre == 0))
            return false;
        // Numbers, because a field without bytes may have a null address.
        auto next = reinterpret_cast<std::uintptr_t>(row.data[0]);
        const DWORD last = row.fieldCount - 1;
        const auto size = reinterpret_cast<std::uintptr_t>(row.data[last]) + row.lengths[last] - next;
        if (size > std::uintptr_t{longField} * row.fieldCount)
            return false;
        for (DWORD i = 1; i < row.fieldCount; ++i) {
            next += std::uintptr_t{1} + row.lengths[i - 1];
            if (reinterpret_cast<std::uintptr_t>(row.data[i]) != next || row.data[i][-1] != 0)
                return false;
        }
        return true;
    }

    /// Copies fields that stand together, up to one that needs quotes. False when none does: all are copied, or none,
    /// because there may not be enough room or a field contains a NUL.
    template <bool quoteLineEnds>
    [[gnu::always_inline]] bool CopyTogether(SRow& row) {
        const DWORD last = row.fieldCount - 1;
        const char* const text = row.data[row.field];
        const std::ptrdiff_t size = row.data[last] + row.lengths[last] - text;
        if (size == 0 || size > row.end - m_out - slack || (TChunk::readsPast && !IsReadablePast(text + size)))
            return false;
        *m_out = static_cast<char>(row.separator);
        char* const out = m_out + (row.field > 0 ? 1 : 0);
        DWORD field = row.field;
        for (std::ptrdiff_t at = 0; at < size; at += chunkSize) {
            const std::ptrdiff_t count = size - at < chunkSize ? size - at : chunkSize;
            const TChunk chunk = TChunk::Load(text + at, count);
            chunk.WithNulsAs(m_separators).Store(out + at);
            const Mask all = UpTo(count);
            const Mask nuls = chunk.Find(TChunk::Repeat(0)) & all;
            if (const Mask special = FindSpecial<quoteLineEnds>(chunk, nuls, all); special != 0) {
                field += Count(nuls & BelowFirst(special));
                // The number is too high if a field contains a NUL.
                if (field > last || row.data[field] > text + at + __builtin_ctzll(special))
                    return false;
                m_out = field == row.field ? m_out : out + (row.data[field] - text) - 1;
                row.field = field;
                return true;
            }
            field += Count(nuls);
        }
        if (field != last)
            return false;
        m_out = out + size;
        row.field = row.fieldCount;
        return false;
    }

    /// False when the field may not fit.
    template <bool quoteLineEnds>
    [[gnu::always_inline]] bool WriteField(SRow& row) {
        const std::ptrdiff_t size = row.lengths[row.field];
        // A field without bytes may have a null address.
        const char* const field = size == 0 ? m_out : row.data[row.field];
        if (size > row.end - m_out - slack || (TChunk::readsPast && !IsReadablePast(field + size)))
            return false;
        char* const start = m_out;
        *m_out = static_cast<char>(row.separator);
        m_out += row.field > 0 ? 1 : 0;
        if (CopyBare<quoteLineEnds>(field, size)) {
            ++row.field;
            return true;
        }
        m_out = start;
        return WriteQuoted(row);
    }

    /// A field that needs quotes; as WriteField.
    [[gnu::always_inline]] bool WriteQuoted(SRow& row) {
        const std::ptrdiff_t size = row.lengths[row.field];
        const char* const field = row.data[row.field];
        if (2 * size > row.end - m_out - slack || (TChunk::readsPast && !IsReadablePast(field + size)))
            return false;
        *m_out = static_cast<char>(row.separator);
        m_out += row.field > 0 ? 1 : 0;
        CopyQuoted(field, size);
        ++row.field;
        return true;
    }

    /// Whether the bytes after the end of a field can be read safely, as far as the loads reach.
    [[gnu::always_inline]] static bool IsReadablePast(const char* end) {
        constexpr std::uintptr_t page = 4096;
        return (reinterpret_cast<std::uintptr_t>(end) - 1) % page < page - 2 * chunkSize;
    }

    /// Those of the bytes `all` for which a field needs quotes; the bytes `nuls`, which are NULs, need none.
    template <bool quoteLineEnds>
    [[gnu::always_inline]] Mask FindSpecial(const TChunk& chunk, Mask nuls, Mask all) const {
        Mask special = chunk.FindEither(m_separators, m_quotes);
        if constexpr (quoteLineEnds) {
            if ((chunk.FindControls() & ~nuls & all) != 0) [[unlikely]]
                special |= chunk.Find(TChunk::Repeat('\r')) | chunk.Find(TChunk::Repeat('\n')) |
                           chunk.Find(TChunk::Repeat(m_pre));
        }
        return special & all;
    }

    /// False, somewhere inside the field, when it needs quotes.
    template <bool quoteLineEnds>
    [[gnu::always_inline]] bool CopyBare(const char* from, std::ptrdiff_t left) {
        for (; left > chunkSize; from += chunkSize, left -= chunkSize, m_out += chunkSize) {
            const TChunk chunk = TChunk::Load(from, chunkSize);
            chunk.Store(m_out);
            if (FindSpecial<quoteLineEnds>(chunk, 0, UpTo(chunkSize)) != 0)
                return false;
        }
        const TChunk chunk = TChunk::Load(from, left);
        chunk.Store(m_out);
        m_out += left;
        return FindSpecial<quoteLineEnds>(chunk, 0, UpTo(left)) == 0;
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
