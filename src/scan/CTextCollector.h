// Records of UTF-8 delimited text from blocks of 64 bytes: the bytes that the grammar keeps, a NUL for each
// separator.
//
// Here quotes switch at any place and every space outside them goes, so that no byte but the control bytes is an
// anomaly, and any byte is a place where the plain grammar can go on.
//
// Invariant, at the start of a block: up to m_pOut stands what the plain grammar would have collected from the bytes
// before the block, except that a quote right before it that may be the first of a pair is still to be decided on.
#pragma once

#include "scan/Bits.h"
#include "scan/Kernel.h"

namespace NSTQ::Scan {

template <class TBlock>
class CTextCollector {
public:
    [[gnu::always_inline]] explicit CTextCollector(const SText& text)
        : m_separator(TBlock::Repeat(text.cSeparator)), m_pBlock(text.pNext), m_pOut(text.pOut),
          m_tabs(text.cSeparator == TAB ? ~Mask{0} : 0), m_inQuotes(text.bQuoted ? ~Mask{0} : 0) {}

    [[gnu::always_inline]] void Collect(SText& text) {
        // As in CFieldBlocks.
        const std::ptrdiff_t within = text.pEnd - text.pNext - 1;
        const auto room = static_cast<std::ptrdiff_t>(text.dwRoom) - BLOCK;
        const std::ptrdiff_t last = (within < room ? within : room) - 2 * BLOCK;
        if (last < 0)
            return;
        const unsigned char* const lastBlock = text.pNext + last;
        while (m_pBlock <= lastBlock && CollectBlock(text)) {
        }
        // The next byte tells what a closing quote is: it is handed back.
        text.pNext = m_pBlock - m_afterClosing;
        text.bQuoted = (m_inQuotes | m_afterClosing) != 0;
        text.pOut = m_pOut;
        text.bAscii = text.bAscii && m_high == 0;
    }

private:
    static constexpr unsigned char TAB = 0x09;

    /// False when the record has ended or a control byte stands in the way, which is then next.
    [[gnu::always_inline]] bool CollectBlock(SText& text) {
        const TBlock block = TBlock::Load(m_pBlock);
        const Mask separators = block.Find(m_separator);
        const Mask quotes = block.FindQuotes();
        const Mask spaces = block.FindSpaces();
        const bool isBare = (quotes | m_inQuotes | m_afterClosing) == 0;
        // From each opening quote to before its closing one; a doubled quote closes and opens again.
        const Mask inside = isBare ? 0 : TBlock::PrefixXor(quotes) ^ m_inQuotes;
        const Mask closing = quotes & ~inside;
        const Mask afterClosing = closing << 1 | m_afterClosing;
        // A TAB that separates is a control byte inside quotes.
        const Mask controls = block.FindControls() & (~separators | (m_tabs & inside));
        const Mask taken = BelowFirst(controls);
        const Mask dropped = ((quotes & ~(inside & afterClosing)) | (spaces & ~inside)) & taken;
        if (isBare && dropped == 0)
            block.Without(m_separator).Store(m_pOut);
        else
            PutNuls(TBlock::CopyWithout(m_pBlock, dropped, separators & ~inside, m_pOut));
        m_pOut += Count(taken & ~dropped);
        m_high |= block.FindHigh() & taken;
        if (controls != 0) {
            Stop(text, TBlock::First(controls), inside);
            return false;
        }
        m_inQuotes = 0 - (inside >> 63);
        m_afterClosing = closing >> 63;
        m_pBlock += BLOCK;
        return true;
    }

    /// The control byte at `end` is a line end outside quotes, or left to the caller.
    [[gnu::always_inline]] void Stop(SText& text, unsigned end, Mask inside) {
        m_pBlock += end;
        m_inQuotes = inside >> end & 1;
        m_afterClosing = 0;
        if (m_inQuotes == 0 && *m_pBlock == text.cPre && (text.cPost == 0 || m_pBlock[1] == text.cPost)) {
            m_pBlock += text.cPost == 0 ? 1 : 2;
            text.bEnded = true;
        }
    }

    [[gnu::always_inline]] void PutNuls(Mask stops) const {
        if (!TBlock::COPIES_NULS)
            for (; stops != 0; stops &= stops - 1)
                m_pOut[TBlock::First(stops)] = 0;
    }

    const typename TBlock::Bytes m_separator;
    const unsigned char* m_pBlock;
    char* m_pOut;
    const Mask m_tabs; ///< all bits when the separator is the TAB, else none
    Mask m_inQuotes;
    Mask m_afterClosing = 0; ///< whether the byte before the block is a quote that closes, or the first of a pair
    Mask m_high = 0;         ///< not 0 when a byte above 0x7F was taken
};

/// As SKernel::pSplitTexts.
template <class TBlock>
[[gnu::always_inline]] inline void SplitTexts(STexts& texts) {
    const typename TBlock::Bytes nul = TBlock::Repeat(0);
    for (char* at = texts.pText; at < texts.pEnd; at += BLOCK) {
        const std::ptrdiff_t left = texts.pEnd - at;
        Mask ends = TBlock::Load(reinterpret_cast<const unsigned char*>(at)).Find(nul);
        if (left < BLOCK)
            ends &= (Mask{1} << left) - 1;
        const DWORD count = Count(ends);
        if (count == 0)
            continue;
        if (texts.dwTexts + count > texts.dwEntries)
            return;
        TBlock::template PutFields<true>(ends, at, texts.pText, texts.ppData + texts.dwTexts,
                                         texts.pLen + texts.dwTexts);
        texts.dwTexts += count;
        texts.pText = at + BehindLast(ends);
    }
}

} // namespace NSTQ::Scan
