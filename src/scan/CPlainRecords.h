// Records of ANSI delimited text that need no splitting, because reading their fields and writing them as CSV changes
// nothing but separators and line ends.
//
// Such records are copied in blocks, each up to its line end. One with a byte that reading or writing would treat in
// another way (a quote, a control byte, a space at an end of a field, the separator that is written) is left to the
// caller, and so is one near the end of the bytes.
#pragma once

#include "scan/VectorUnit.h"

namespace NSTQ::Scan {

template <class TBlock>
class CPlainRecords {
public:
    [[gnu::always_inline]] explicit CPlainRecords(const SRecords& records)
        : m_separator(TBlock::Repeat(records.separator)), m_outSeparator(TBlock::Repeat(records.outSeparator)),
          m_next(records.next), m_out(records.out) {}

    [[gnu::always_inline]] void Copy(SRecords& records) {
        DWORD count = 0;
        while (count < records.maxCount && CopyRecord(records))
            ++count;
        records.count = count;
        records.next = m_next;
        records.out = m_out;
    }

private:
    [[gnu::always_inline]] bool CopyRecord(const SRecords& records) {
        const unsigned char* in = m_next;
        char* out = m_out;
        Mask afterStop = 1;
        Mask afterSpace = 0;
        for (;; in += blockSize, out += blockSize) {
            // The line end may be the last byte of the block and the one after it.
            if (records.end - in <= blockSize || records.outEnd - out < blockSize + 2)
                return false;
            const TBlock block = TBlock::Load(in);
            const Mask separators = block.Find(m_separator);
            const Mask controls = block.FindControls() & ~separators; // the separator may be the TAB
            const Mask spaces = block.FindSpaces();
            const Mask stops = separators | controls;
            const Mask anomalies = block.FindQuotes() | (block.Find(m_outSeparator) & ~separators) |
                                   (spaces & (stops << 1 | afterStop)) | (stops & (spaces << 1 | afterSpace));
            if ((anomalies & UpToFirst(controls)) != 0)
                return false;
            block.Replace(m_separator, m_outSeparator).Store(out);
            if (controls != 0)
                return EndRecord(records, in + TBlock::First(controls), out + TBlock::First(controls));
            afterStop = stops >> 63;
            afterSpace = spaces >> 63;
        }
    }

    /// At a control byte: false unless it begins a line end.
    [[gnu::always_inline]] bool EndRecord(const SRecords& records, const unsigned char* in, char* out) {
        if (*in++ != records.pre || (records.post != 0 && *in++ != records.post))
            return false;
        *out++ = static_cast<char>(records.outPre);
        *out = static_cast<char>(records.outPost);
        m_next = in;
        m_out = out + (records.outPost == 0 ? 0 : 1);
        return true;
    }

    const typename TBlock::Bytes m_separator;
    const typename TBlock::Bytes m_outSeparator;
    const unsigned char* m_next; ///< after the last record that was copied
    char* m_out;
};

} // namespace NSTQ::Scan
