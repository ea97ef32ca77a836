// Validates UTF-8 in blocks of 64 bytes: the positions of the lead bytes determine those of the trail bytes, for all
// bytes of a block at once.
#pragma once

#include "scan/VectorUnit.h"

#include <cstddef>

namespace NSTQ::Scan {

template <class TBlock>
class CUtf8Check {
public:
    /// As SKernel::countUtf8.
    [[gnu::always_inline]] std::size_t Count(const unsigned char* text, std::size_t size) {
        std::size_t count = 0;
        // The byte after a block belongs to it: the second byte of a character decides whether the first is valid.
        while (size - count > blockSize && IsValid(text + count))
            count += blockSize;
        // Back to the beginning of the character that is incomplete at the end of the last block.
        for (bool isInside = m_due != 0; isInside; isInside = text[count] < 0xC0)
            --count;
        return count;
    }

private:
    /// Changes nothing when the block is invalid.
    [[gnu::always_inline]] bool IsValid(const unsigned char* from) {
        const TBlock block = TBlock::Load(from);
        const Mask high = block.FindHigh();
        if ((high | m_due) == 0)
            return true;
        const Mask leads = high & ~block.FindHighBelow(0xC0);
        const Mask leadsOf3 = high & ~block.FindHighBelow(0xE0);
        const Mask leadsOf4 = high & ~block.FindHighBelow(0xF0);
        if ((leads << 1 | leadsOf3 << 2 | leadsOf4 << 3 | m_due) != (high & ~leads))
            return false;
        const Mask e0 = block.Find(TBlock::Repeat(0xE0));
        const Mask ed = block.Find(TBlock::Repeat(0xED));
        const Mask overlong = leads & block.FindHighBelow(0xC2);
        if ((overlong | e0 | ed | leadsOf4) != 0 &&
            (overlong | FindOutOfRange(block, TBlock::Load(from + 1), e0, ed, leadsOf4)) != 0)
            return false;
        m_due = leads >> 63 | leadsOf3 >> 62 | leadsOf4 >> 61;
        return true;
    }

    /// The lead bytes of overlong forms of more than two bytes, of surrogates and of values above U+10FFFF.
    [[gnu::always_inline]] static Mask FindOutOfRange(const TBlock& block, const TBlock& next, Mask e0, Mask ed,
                                                      Mask leadsOf4) {
        const Mask nextBelow90 = next.FindHighBelow(0x90);
        const Mask nextBelowA0 = next.FindHighBelow(0xA0);
        const Mask f0 = block.Find(TBlock::Repeat(0xF0));
        const Mask belowF4 = block.FindHighBelow(0xF4);
        const Mask aboveF4 = leadsOf4 & ~block.FindHighBelow(0xF5);
        return (e0 & nextBelowA0) | (ed & ~nextBelowA0) | (f0 & nextBelow90) | (leadsOf4 & ~belowF4 & ~nextBelow90) |
               aboveF4;
    }

    Mask m_due = 0; ///< where the next block must begin with trail bytes
};

} // namespace NSTQ::Scan
