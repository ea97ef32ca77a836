// The grammar of delimited text in UTF-8: collects one record, its syntax resolved, as field texts each with its NUL.
//
// Ordinary bytes may be taken many at a time by a kernel of src/scan, which leaves the others to the grammar here.
#pragma once

#include "CCsvDataAccess.h"
#include "scan/Kernel.h"
#include "text/CFillCursor.h"

#include <algorithm>

namespace NSTQ::NSTQCore {

class CCsvDataAccess::CRecordCollector {
public:
    /// `dwCapacity` counts the final NUL.
    [[gnu::always_inline]] CRecordCollector(CCsvDataAccess& reader, unsigned char* pBuff, DWORD dwCapacity)
        : m_reader(reader), m_cursor(reader), m_pBuff(pBuff), m_dwCapacity(dwCapacity) {
        const Scan::SKernel& kernel = Scan::GetKernel();
        if (kernel.pCollectText != nullptr && Scan::AreOrdinary(static_cast<unsigned char>(reader.m_cSeparator),
                                                                static_cast<unsigned char>(reader.m_cPreDelimiter),
                                                                static_cast<unsigned char>(reader.m_cPostDelimiter)))
            m_pKernel = &kernel;
    }

    /// False when the record does not fit; the read position then stays inside it.
    [[gnu::always_inline]] bool Collect() {
        bool fits = true;
        while (fits && !m_bDone && m_cursor.HasNext()) {
            CollectOrdinaryBytes();
            if (m_bDone)
                break;
            CollectRun();
            fits = !m_cursor.HasNext() || CollectNext();
        }
        // A record that ends with the fill's last byte makes the refill now, so that HasNextLineData is exact.
        if (m_bDone)
            m_cursor.HasNext();
        m_cursor.Leave();
        return fits;
    }

    /// Whether only bytes below 0x80 were collected.
    [[gnu::always_inline]] bool IsAscii() const { return m_bAscii; }

    /// Ends the last field, where something was collected, and gives the bytes of the record.
    [[gnu::always_inline]] DWORD Finish() {
        if (m_dwSize > 0)
            m_pBuff[m_dwSize++] = SCDataAccessDefine::NULL_CODE;
        return m_dwSize;
    }

private:
    static constexpr unsigned char QUOTE = SCDataAccessDefine::DOUBLE_QUOTATION;
    static constexpr unsigned char SPACE = SCDataAccessDefine::SPACE_CODE;

    [[gnu::always_inline]] void CollectOrdinaryBytes() {
        if (m_pKernel == nullptr)
            return;
        const unsigned char* const next = m_cursor.Bytes();
        auto* const out = reinterpret_cast<char*>(m_pBuff) + m_dwSize;
        Scan::SText text{.pNext = next,
                         .pEnd = next + m_cursor.CountBytes(),
                         .pOut = out,
                         .dwRoom = m_dwCapacity - 1 - m_dwSize,
                         .cSeparator = static_cast<unsigned char>(m_reader.m_cSeparator),
                         .cPre = static_cast<unsigned char>(m_reader.m_cPreDelimiter),
                         .cPost = static_cast<unsigned char>(m_reader.m_cPostDelimiter),
                         .bQuoted = m_bQuoted,
                         .bAscii = m_bAscii,
                         .bEnded = false};
        m_pKernel->pCollectText(text);
        m_cursor.Consume(static_cast<DWORD>(text.pNext - next));
        m_dwSize += static_cast<DWORD>(text.pOut - out);
        m_bQuoted = text.bQuoted;
        m_bAscii = text.bAscii;
        m_bDone = text.bEnded;
    }

    /// Collects the ordinary bytes that follow, as far as the fill and the capacity reach.
    [[gnu::always_inline]] void CollectRun() {
        const unsigned char* const bytes = m_cursor.Bytes();
        const DWORD room = std::min(m_cursor.CountBytes(), m_dwCapacity - 1 - m_dwSize);
        const unsigned char lowest = m_bQuoted ? SPACE : SPACE + 1;
        const unsigned char separator = m_bQuoted ? QUOTE : static_cast<unsigned char>(m_reader.m_cSeparator);
        const auto pre = static_cast<unsigned char>(m_reader.m_cPreDelimiter);
        unsigned char* const target = m_pBuff + m_dwSize;
        DWORD count = 0;
        unsigned char all = 0;
        for (; count < room; ++count) {
            const unsigned char byte = bytes[count];
            if (byte < lowest || byte == QUOTE || byte == separator || byte == pre)
                break;
            target[count] = byte;
            all |= byte;
        }
        m_bAscii = m_bAscii && all < 0x80;
        m_cursor.Consume(count);
        m_dwSize += count;
    }

    /// Takes one byte. False when it has to be collected and does not fit.
    [[gnu::always_inline]] bool CollectNext() {
        const unsigned char byte = m_cursor.Get();
        m_cursor.Consume();
        if (m_cursor.IsPreDelimiter(byte) && m_cursor.TakePostDelimiter()) {
            m_bDone = !(m_bQuoted && m_reader.m_bQuoteNewLine);
            return true;
        }
        if (!m_bQuoted && byte == static_cast<unsigned char>(m_reader.m_cSeparator))
            return CollectByte(SCDataAccessDefine::NULL_CODE);
        if (byte < SPACE) {
            m_bDone = byte == SCDataAccessDefine::SUB_CODE && m_dwSize > 0;
            return true;
        }
        if (byte == QUOTE) {
            if (m_bQuoted && m_cursor.TakeIf(SCDataAccessDefine::DOUBLE_QUOTATION))
                return CollectByte(QUOTE);
            m_bQuoted = !m_bQuoted;
            return true;
        }
        return (byte == SPACE && !m_bQuoted) || CollectByte(byte);
    }

    [[gnu::always_inline]] bool CollectByte(unsigned char byte) {
        if (m_dwSize + 1 >= m_dwCapacity)
            return false;
        m_pBuff[m_dwSize++] = byte;
        m_bAscii = m_bAscii && byte < 0x80;
        return true;
    }

    CCsvDataAccess& m_reader;
    CFillCursor m_cursor;
    unsigned char* const m_pBuff;
    const DWORD m_dwCapacity;
    DWORD m_dwSize = 0;
    bool m_bQuoted = false;
    bool m_bDone = false;
    bool m_bAscii = true;
    const Scan::SKernel* m_pKernel = nullptr; ///< null without one, or where bytes play unusual parts
};

} // namespace NSTQ::NSTQCore
