// Fields of ANSI delimited text from blocks of 64 bytes.
//
// A block becomes bit masks, one bit per byte: separators, quotes, spaces, control bytes. The rest is arithmetic on
// them: which bytes end a field (the "stops") and which are anomalies, bytes without a rule here. Fields that end
// before the first anomaly are returned; the one that contains it is left to the caller from its first byte, and what
// was written of it are unused bytes after the last NUL.
//
// Invariant, at the start of a block: the bytes from m_pFieldIn to m_pBlock are, without the quotes that the grammar
// removes, at m_pField to m_pOut; and the number of bytes that this call has written up to m_pOut, including NULs, is
// what the grammar counts against the limit of the record.
#pragma once

#include "scan/Bits.h"
#include "scan/Kernel.h"

namespace NSTQ::Scan {

template <class TBlock>
class CFieldBlocks {
public:
    [[gnu::always_inline]] explicit CFieldBlocks(const SFields& fields)
        : m_separator(TBlock::Repeat(fields.cSeparator)), m_pBlock(fields.pNext), m_pOut(fields.pField),
          m_pFieldIn(fields.pNext), m_pField(fields.pField), m_ppData(fields.ppData), m_pLen(fields.pLen),
          m_tabs(fields.cSeparator == TAB ? ~Mask{0} : 0) {}

    [[gnu::always_inline]] void Read(SFields& fields) {
        // Never writes more than it reads. With quotes it reads a block from each byte of this one, and writes as far
        // beyond it.
        const std::ptrdiff_t within = fields.pEnd - fields.pNext - 1;
        const auto room = static_cast<std::ptrdiff_t>(fields.dwRoom) - BLOCK;
        const std::ptrdiff_t last = (within < room ? within : room) - 2 * BLOCK;
        if (last >= 0 && fields.dwFieldSize >= BLOCK) {
            m_pLastBlock = fields.pNext + last;
            while (ReadBlocks(fields)) {
            }
        }
        fields.pNext = m_pFieldIn;
        fields.pField = m_pField;
        fields.dwFields = m_dwFields;
    }

private:
    using Bytes = typename TBlock::Bytes;

    static constexpr unsigned char TAB = 0x09;
    static constexpr unsigned char SPACE = 0x20;

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
        while (m_pBlock <= m_pLastBlock) {
            const TBlock block = TBlock::Load(m_pBlock);
            const SMasks masks = FindAll(block);
            if (masks.quotes != 0)
                return ReadQuotedBlocks(fields, masks);
            block.Without(m_separator).Store(m_pOut);
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
            m_pBlock += BLOCK;
            m_pOut += BLOCK;
            if (m_pBlock > m_pLastBlock)
                return false;
            const TBlock block = TBlock::Load(m_pBlock);
            if (block.HasStructure(m_separator))
                break;
            block.Store(m_pOut);
        }
        m_afterStop = 0;
        m_spaces = (m_pBlock[-1] == SPACE ? 2U : 0U) | (m_pBlock[-2] == SPACE ? 1U : 0U);
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
            const Mask outStops = TBlock::CopyWithout(m_pBlock, dropped, stops, m_pOut);
            if (!EndFields<TBlock::COPIES_NULS>(fields, masks, stops, outStops, (blanks | strays) & masks.upToEnd))
                return false;
            inQuotes = 0 - (inside >> 63);
            afterClosingCarry = closing >> 63;
            afterOpeningCarry = (opening & afterStop) >> 63;
            GoOn(masks, stops, Count(dropped));
            if (m_pBlock > m_pLastBlock)
                return false;
            masks = FindAll(TBlock::Load(m_pBlock));
        } while ((masks.quotes | inQuotes | afterClosingCarry) != 0);
        return true;
    }

    /// Whether the byte before each byte is a space.
    [[gnu::always_inline]] Mask SpacesBefore(const SMasks& masks) const { return masks.spaces << 1 | m_spaces >> 1; }

    [[gnu::always_inline]] void GoOn(const SMasks& masks, Mask stops, unsigned dropped) {
        m_afterStop = stops >> 63;
        m_spaces = masks.spaces >> 62;
        m_pBlock += BLOCK;
        m_pOut += BLOCK - static_cast<std::ptrdiff_t>(dropped);
    }

    /// Returns the fields that end at `stops`, at `outStops` after m_pOut. False when there are no more entries.
    template <bool hasNuls>
    [[gnu::always_inline]] bool EndFields(SFields& fields, const SMasks& masks, Mask stops, Mask outStops,
                                          Mask anomalies) {
        // Only the first field can be longer than a block.
        if (m_pOut - m_pField > static_cast<std::ptrdiff_t>(fields.dwFieldSize) - BLOCK ||
            m_dwFields + Count(stops) > fields.dwEntries) [[unlikely]]
            return false;
        bool isLineEnd = false;
        const unsigned end = TBlock::First(masks.controls);
        if (masks.controls != 0) {
            isLineEnd = m_pBlock[end] == fields.cPre && (fields.cPost == 0 || m_pBlock[end + 1] == fields.cPost);
            if (!isLineEnd)
                anomalies |= masks.controls & masks.upToEnd;
        }
        if (anomalies != 0) [[unlikely]] {
            const Mask kept = stops & BelowFirst(anomalies);
            PutFields<hasNuls>(KeepLowest(outStops, Count(kept)));
            if (kept != 0)
                m_pFieldIn = m_pBlock + BehindLast(kept);
            return false;
        }
        PutFields<hasNuls>(outStops);
        if (!isLineEnd) {
            if (stops != 0)
                m_pFieldIn = m_pBlock + BehindLast(stops);
            return true;
        }
        m_pField[-1] = 0;
        m_pFieldIn = m_pBlock + end + (fields.cPost == 0 ? 1 : 2);
        fields.bEnded = true;
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
        TBlock::template PutFields<hasNuls>(stops, m_pOut, m_pField, m_ppData + m_dwFields, m_pLen + m_dwFields);
        m_dwFields += Count(stops);
        m_pField = m_pOut + BehindLast(stops);
    }

    const Bytes m_separator;
    const unsigned char* m_pBlock;
    char* m_pOut;
    const unsigned char* m_pFieldIn; ///< where the current field begins, and where it is written
    char* m_pField;
    const char** const m_ppData;
    WORD* const m_pLen;
    DWORD m_dwFields = 0; ///< returned
    const Mask m_tabs;    ///< all bits when the separator is the TAB, else none
    const unsigned char* m_pLastBlock = nullptr;
    Mask m_afterStop = 1; ///< whether the byte before the block ends a field
    Mask m_spaces = 0;    ///< whether it and (in bit 0) the one before are spaces
};

} // namespace NSTQ::Scan
