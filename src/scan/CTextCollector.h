// Records of UTF-8 delimited text from blocks of 64 bytes: the bytes that the grammar keeps, with a NUL for each
// separator.
//
// In this grammar a quote toggles anywhere and every space outside quotes is removed, so that only control bytes are
// anomalies, and the scalar grammar can continue at any byte. With a page to convert to, a character is an anomaly
// unless it has three bytes in UTF-8 and two in the page, and the caller continues before it. Converting a block
// removes the third byte of each character with quotes and spaces, and puts the code in place of the other two.
//
// Invariant, at the start of a block: the bytes up to m_out are what the scalar grammar would have collected from
// the bytes before the block and its caller would have converted, except that a quote directly before it that may be
// the first of a pair is still undecided.
#pragma once

#include "scan/VectorUnit.h"

namespace NSTQ::Scan {

template <class TBlock>
class CTextCollector {
public:
    [[gnu::always_inline]] explicit CTextCollector(const SText& text)
        : m_separator(TBlock::Repeat(text.separator)), m_block(text.next), m_out(text.out), m_field(text.field),
          m_tabs(text.separator == tab ? ~Mask{0} : 0), m_inQuotes(text.isQuoted ? ~Mask{0} : 0) {}

    [[gnu::always_inline]] void Collect(SText& text) {
        // As in CFieldBlocks.
        const std::ptrdiff_t within = text.end - text.next - 1;
        const auto room = static_cast<std::ptrdiff_t>(text.room) - blockSize;
        const std::ptrdiff_t last = (within < room ? within : room) - 2 * blockSize;
        if (last < 0)
            return;
        m_lastBlock = text.next + last;
        while (m_block <= m_lastBlock && CollectBlock(text)) {
        }
        // The next byte decides whether a quote closes, so this one is left to the caller.
        text.next = m_block - m_afterClosing;
        text.isQuoted = (m_inQuotes | m_afterClosing) != 0;
        text.out = m_out;
        text.field = m_field;
        text.fieldCount = m_fieldCount;
        text.saved = m_saved;
        text.isConverted = m_isConverted;
    }

private:
    static constexpr unsigned char tab = 0x09;

    /// False when the record has ended or the next byte is left to the caller.
    [[gnu::always_inline]] bool CollectBlock(SText& text) {
        const TBlock block = TBlock::Load(m_block);
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
        const Mask ordinary = BelowFirst(controls);
        const SCharacters characters = FindCharacters(text, block, ordinary);
        Mask taken = ordinary & characters.known;
        const Mask dropped =
            ((quotes & ~(inside & afterClosing)) | (spaces & ~inside) | characters.leads << 2) & taken;
        const Mask stops = separators & ~inside & taken;
        if (isBare && dropped == 0) {
            block.Without(m_separator).Store(m_out);
            PutFields<true>(text, stops);
        } else {
            const Mask outStops = TBlock::CopyWithout(m_block, dropped, stops, m_out);
            if (characters.leads != 0) {
                taken = PutCodes(text, characters.leads, dropped, taken);
                m_saved += Count(characters.leads & taken);
            }
            PutFields<TBlock::copiesNuls>(text, outStops);
        }
        m_out += Count(taken & ~dropped);
        if (taken != ~Mask{0}) {
            const unsigned size = Count(taken);
            return taken == ordinary ? Stop(text, size, inside) : GoOn(size, inside, closing);
        }
        m_inQuotes = 0 - (inside >> 63);
        m_afterClosing = closing >> 63;
        m_block += blockSize;
        if (isBare && (separators | characters.leads) == 0)
            CollectRun();
        return true;
    }

    /// Handles blocks that consist of unquoted ASCII and spaces only.
    [[gnu::always_inline]] void CollectRun() {
        for (; m_block <= m_lastBlock; m_block += blockSize) {
            const TBlock block = TBlock::Load(m_block);
            if (block.HasStructure(m_separator) || block.FindHigh() != 0)
                return;
            const Mask spaces = block.FindSpaces();
            if (spaces == 0)
                block.Store(m_out);
            else
                TBlock::CopyWithout(m_block, spaces, 0, m_out);
            m_out += blockSize - static_cast<std::ptrdiff_t>(Count(spaces));
        }
    }

    struct SCharacters {
        Mask leads; ///< the lead bytes of the characters to convert
        Mask known; ///< the bytes that can be taken
    };

    [[gnu::always_inline]] SCharacters FindCharacters(const SText& text, const TBlock& block, Mask ordinary) {
        const Mask high = block.FindHigh();
        if ((high & ordinary) == 0)
            return {0, ~Mask{0}};
        const bool converts = text.blocks != nullptr;
        m_isConverted = m_isConverted && (converts || text.isUtf8);
        if (!m_isConverted)
            return {0, ~Mask{0}};
        const Mask leads = block.FindLeads();
        const Mask trails = block.FindHighBelow(0xC0);
        const Mask misplaced = (leads << 1 | leads << 2) ^ trails;
        Mask faulty = (high & ~(leads | trails)) | misplaced | (leads & (misplaced >> 1 | misplaced >> 2));
        // A character that ends after the block begins the next one.
        const Mask cut = leads & Mask{3} << (blockSize - 2);
        if (converts) {
            const Mask known = BelowFirst(faulty | cut);
            return {leads & ordinary & known, known};
        }
        // Overlong forms and surrogates show in the second byte.
        const Mask lowTrails = block.FindHighBelow(0xA0);
        faulty |= (block.Find(TBlock::Repeat(0xE0)) << 1 & lowTrails) |
                  (block.Find(TBlock::Repeat(0xED)) << 1 & ~lowTrails);
        m_isConverted = (faulty & ordinary) == 0;
        return {0, m_isConverted ? BelowFirst(cut) : ~Mask{0}};
    }

    /// Puts the codes of the characters in place of their first two bytes. Returns the part of `taken` before the
    /// first one that is not a character or has no code of two bytes.
    [[gnu::always_inline]] Mask PutCodes(const SText& text, Mask leads, Mask dropped, Mask taken) {
        // Where the units with three bytes in UTF-8 begin. Surrogates have no code.
        constexpr unsigned firstBlock = 0x800 >> 6, lastOfOneByte = 0xFF;
        const unsigned short* const starts = text.blockStarts;
        const unsigned short* const blocks = text.blocks;
        for (; leads != 0; leads &= leads - 1) {
            const unsigned at = TBlock::First(leads);
            const unsigned block = TBlock::GetUpperBits(m_block + at);
            const unsigned code = blocks[starts[block] + (m_block[at + 2] & 0x3FU)];
            if (block < firstBlock || code <= lastOfOneByte) [[unlikely]]
                return taken & BelowFirst(leads);
            const unsigned short bytes = __builtin_bswap16(static_cast<unsigned short>(code));
            __builtin_memcpy(m_out + TBlock::CountBelow(~dropped, at), &bytes, sizeof bytes);
        }
        return taken;
    }

    template <bool hasNuls>
    [[gnu::always_inline]] void PutFields(const SText& text, Mask stops) {
        if (stops == 0)
            return;
        const DWORD fields = m_fieldCount + Count(stops);
        if (fields <= text.entryCount)
            TBlock::template PutFields<hasNuls>(stops, m_out, m_field, text.data + m_fieldCount,
                                                text.lengths + m_fieldCount);
        else if (!hasNuls)
            PutNuls(stops);
        m_fieldCount = fields;
        m_field = m_out + BehindLast(stops);
    }

    [[gnu::always_inline]] void PutNuls(Mask stops) const {
        for (; stops != 0; stops &= stops - 1)
            m_out[TBlock::First(stops)] = 0;
    }

    /// Before a control byte, which is a line end outside quotes or left to the caller.
    [[gnu::always_inline]] bool Stop(SText& text, unsigned size, Mask inside) {
        m_block += size;
        m_inQuotes = inside >> size & 1;
        m_afterClosing = 0;
        if (m_inQuotes == 0 && *m_block == text.pre && (text.post == 0 || m_block[1] == text.post)) {
            m_block += text.post == 0 ? 1 : 2;
            text.hasEnded = true;
        }
        return false;
    }

    /// Before a character that is split by the end of the block or left to the caller.
    [[gnu::always_inline]] bool GoOn(unsigned size, Mask inside, Mask closing) {
        if (size == 0)
            return false;
        m_inQuotes = 0 - (inside >> (size - 1) & 1);
        m_afterClosing = closing >> (size - 1) & 1;
        m_block += size;
        return size >= blockSize - 2;
    }

    const typename TBlock::Bytes m_separator;
    const unsigned char* m_block;
    const unsigned char* m_lastBlock = nullptr;
    char* m_out;
    char* m_field;
    DWORD m_fieldCount = 0;
    DWORD m_saved = 0;
    const Mask m_tabs; ///< all bits when the separator is the TAB, else none
    Mask m_inQuotes;
    Mask m_afterClosing = 0; ///< whether the byte before the block is a quote that closes, or the first of a pair
    bool m_isConverted = true;
};

/// As SKernel::splitTexts.
template <class TBlock>
[[gnu::always_inline]] inline void SplitTexts(STexts& texts) {
    const typename TBlock::Bytes nul = TBlock::Repeat(0);
    for (char* at = texts.text; at < texts.end; at += blockSize) {
        const std::ptrdiff_t left = texts.end - at;
        Mask ends = TBlock::Load(reinterpret_cast<const unsigned char*>(at)).Find(nul);
        if (left < blockSize)
            ends &= (Mask{1} << left) - 1;
        const DWORD count = Count(ends);
        if (count == 0)
            continue;
        if (texts.textCount + count > texts.entryCount)
            return;
        TBlock::template PutFields<true>(ends, at, texts.text, texts.data + texts.textCount,
                                         texts.lengths + texts.textCount);
        texts.textCount += count;
        texts.text = at + BehindLast(ends);
    }
}

} // namespace NSTQ::Scan
