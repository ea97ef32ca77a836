// Fields of ANSI delimited text from blocks of 64 bytes.
//
// A block becomes bit masks, one bit per byte: separators, quotes, spaces, control bytes. The rest is arithmetic on
// them: which bytes end a field (the "stops") and which are anomalies, bytes without a rule here. Fields that end
// before the first anomaly are returned; the one that contains it is left to the caller from its first byte, and what
// was written of it are unused bytes after the last NUL.
//
// Invariant, at the start of a block: the bytes from m_fieldIn to m_block are, without the quotes that the grammar
// removes, at m_field to m_out; and the number of bytes that this call has written up to m_out, including NULs, is
// what the grammar counts against the limit of the record.
#pragma once

#include "scan/VectorUnit.h"

namespace NSTQ::Scan {

template <class TBlock>
class CFieldBlocks {
public:
    [[gnu::always_inline]] explicit CFieldBlocks(const SFields& fields)
        : m_separator(TBlock::Repeat(fields.separator)), m_block(fields.next), m_out(fields.field),
          m_fieldIn(fields.next), m_field(fields.field), m_data(fields.data), m_lengths(fields.lengths),
          m_tabs(fields.separator == tab ? ~Mask{0} : 0) {}

    [[gnu::always_inline]] void Read(SFields& fields) {
        // Never writes more than it reads. With quotes it reads a block from each byte of this one, and writes as far
        // beyond it.
        const std::ptrdiff_t within = fields.end - fields.next - 1;
        const auto room = static_cast<std::ptrdiff_t>(fields.room) - blockSize;
        const std::ptrdiff_t last = (within < room ? within : room) - 2 * blockSize;
        if (last >= 0 && fields.fieldSize >= blockSize) {
            m_lastBlock = fields.next + last;
            while (ReadBlocks(fields)) {
            }
        }
        fields.next = m_fieldIn;
        fields.field = m_field;
        fields.fieldCount = m_fieldCount;
    }

private:
    using Bytes = typename TBlock::Bytes;

    static constexpr unsigned char tab = 0x09;
    static constexpr unsigned char space = 0x20;

    struct SMasks {
        Mask separators;
        Mask quotes;
        Mask spaces;
        Mask controls;
        Mask upToEnd; ///< through the first control byte, which can only be a line end
    };

    [[gnu::always_inline]] SMasks FindAll(const TBlock& block) const {
        SMasks masks{block.Find(m_separator), block.FindQuotes(), block.FindSpaces(), block.FindControls(), 0};
        masks.controls &= ~masks.separators; // the separator may be the TAB
        masks.upToEnd = UpToFirst(masks.controls);
        return masks;
    }

    /// False when the record has ended or cannot be continued here.
    [[gnu::always_inline]] bool ReadBlocks(SFields& fields) {
        while (m_block <= m_lastBlock) {
            const TBlock block = TBlock::Load(m_block);
            const SMasks masks = FindAll(block);
            if (masks.quotes != 0)
                return ReadQuotedBlocks(fields, masks);
            block.Without(m_separator).Store(m_out);
            if ((masks.separators | masks.controls) == 0) {
                if ((masks.spaces & m_afterStop) != 0 || !ReadRun())
                    return false;
                continue;
            }
            const Mask stops = (masks.separators | masks.controls) & masks.upToEnd;
            const Mask blanks = (masks.spaces & (stops << 1 | m_afterStop)) | (stops & SpacesBefore(masks));
            if (!EndFields<true>(fields, masks, stops, stops, blanks & masks.upToEnd))
                return false;
            GoOn(masks, stops, 0);
        }
        return false;
    }

    /// After a block without structure, handles all similar ones that follow.
    [[gnu::always_inline]] bool ReadRun() {
        for (;;) {
            m_block += blockSize;
            m_out += blockSize;
            if (m_block > m_lastBlock)
                return false;
            const TBlock block = TBlock::Load(m_block);
            if (block.HasStructure(m_separator))
                break;
            block.Store(m_out);
        }
        m_afterStop = 0;
        m_spaces = (m_block[-1] == space ? 2U : 0U) | (m_block[-2] == space ? 1U : 0U);
        return true;
    }

    /// Blocks with quotes or inside them. A quote directly after a stop opens; inside, the next one closes or is
    /// doubled. The masks of the first block are computed already.
    [[gnu::always_inline]] bool ReadQuotedBlocks(SFields& fields, SMasks masks) {
        Mask inQuotes = 0; // all bits or none
        Mask afterOpeningCarry = 0;
        Mask afterClosingCarry = 0;
        do {
            // From each opening quote to before its closing one; a doubled quote closes and opens again.
            const Mask inside = TBlock::PrefixXor(masks.quotes) ^ inQuotes;
            const Mask stops = ((masks.separators & ~inside) | masks.controls) & masks.upToEnd;
            const Mask afterStop = stops << 1 | m_afterStop;
            const Mask opening = masks.quotes & inside;
            const Mask closing = masks.quotes & ~inside;
            const Mask afterClosing = closing << 1 | afterClosingCarry;
            const Mask afterOpening = (opening & afterStop) << 1 | afterOpeningCarry;
            const Mask blanks = (masks.spaces & (afterStop | afterOpening)) |
                                (stops & (SpacesBefore(masks) | (afterClosing & (masks.spaces << 2 | m_spaces))));
            const Mask strays = (opening & ~(afterStop | afterClosing)) | (afterClosing & ~(masks.quotes | stops)) |
                                (inside & (masks.controls | (masks.separators & m_tabs)));
            const Mask dropped = masks.quotes & ~(opening & afterClosing);
            const Mask outStops = TBlock::CopyWithout(m_block, dropped, stops, m_out);
            if (!EndFields<TBlock::copiesNuls>(fields, masks, stops, outStops, (blanks | strays) & masks.upToEnd))
                return false;
            inQuotes = 0 - (inside >> 63);
            afterClosingCarry = closing >> 63;
            afterOpeningCarry = (opening & afterStop) >> 63;
            GoOn(masks, stops, Count(dropped));
            if (m_block > m_lastBlock)
                return false;
            masks = FindAll(TBlock::Load(m_block));
        } while ((masks.quotes | inQuotes | afterClosingCarry) != 0);
        return true;
    }

    /// Whether the byte before each byte is a space.
    [[gnu::always_inline]] Mask SpacesBefore(const SMasks& masks) const { return masks.spaces << 1 | m_spaces >> 1; }

    [[gnu::always_inline]] void GoOn(const SMasks& masks, Mask stops, unsigned dropped) {
        m_afterStop = stops >> 63;
        m_spaces = masks.spaces >> 62;
        m_block += blockSize;
        m_out += blockSize - static_cast<std::ptrdiff_t>(dropped);
    }

    /// Returns the fields that end at `stops`, at `outStops` after m_out. False when there are no more entries.
    template <bool hasNuls>
    [[gnu::always_inline]] bool EndFields(SFields& fields, const SMasks& masks, Mask stops, Mask outStops,
                                          Mask anomalies) {
        // Only the first field can be longer than a block.
        if (m_out - m_field > static_cast<std::ptrdiff_t>(fields.fieldSize) - blockSize ||
            m_fieldCount + Count(stops) > fields.entryCount) [[unlikely]]
            return false;
        bool isLineEnd = false;
        const unsigned end = TBlock::First(masks.controls);
        if (masks.controls != 0) {
            isLineEnd = m_block[end] == fields.pre && (fields.post == 0 || m_block[end + 1] == fields.post);
            if (!isLineEnd)
                anomalies |= masks.controls & masks.upToEnd;
        }
        if (anomalies != 0) [[unlikely]] {
            const Mask kept = stops & BelowFirst(anomalies);
            PutFields<hasNuls>(KeepLowest(outStops, Count(kept)));
            if (kept != 0)
                m_fieldIn = m_block + BehindLast(kept);
            return false;
        }
        PutFields<hasNuls>(outStops);
        if (!isLineEnd) {
            if (stops != 0)
                m_fieldIn = m_block + BehindLast(stops);
            return true;
        }
        m_field[-1] = 0;
        m_fieldIn = m_block + end + (fields.post == 0 ? 1 : 2);
        fields.hasEnded = true;
        return false;
    }

    [[gnu::always_inline]] static Mask KeepLowest(Mask mask, unsigned count) {
        Mask kept = 0;
        for (; count > 0; --count, mask &= mask - 1)
            kept |= mask & (0 - mask);
        return kept;
    }

    template <bool hasNuls>
    [[gnu::always_inline]] void PutFields(Mask stops) {
        if (stops == 0)
            return;
        TBlock::template PutFields<hasNuls>(stops, m_out, m_field, m_data + m_fieldCount, m_lengths + m_fieldCount);
        m_fieldCount += Count(stops);
        m_field = m_out + BehindLast(stops);
    }

    const Bytes m_separator;
    const unsigned char* m_block;
    char* m_out;
    const unsigned char* m_fieldIn; ///< where the current field begins, and where it is written
    char* m_field;
    const char** const m_data;
    WORD* const m_lengths;
    DWORD m_fieldCount = 0; ///< returned
    const Mask m_tabs;      ///< all bits when the separator is the TAB, else none
    const unsigned char* m_lastBlock = nullptr;
    Mask m_afterStop = 1; ///< whether the byte before the block ends a field
    Mask m_spaces = 0;    ///< whether it and (in bit 0) the one before are spaces
};

} // namespace NSTQ::Scan
