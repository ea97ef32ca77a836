// The grammar of delimited text in UTF-8: parses one record into field texts, each with its NUL.
//
// A kernel of src/scan may take many ordinary bytes at a time and leaves the others to this grammar. It may also
// convert them, up to the first byte above 0x7F that is taken without conversion, and write the entries of the fields
// if it takes the whole record.
#pragma once

#include "CCsvDataAccess.h"
#include "platform/codepage/CodePageTables.h"
#include "scan/Kernel.h"
#include "text/CFillCursor.h"

#include <algorithm>

namespace NSTQ::NSTQCore {

class CCsvDataAccess::CRecordCollector {
public:
    /// `dwCapacity` includes the final NUL.
    [[gnu::always_inline]] CRecordCollector(CCsvDataAccess& reader, unsigned char* pBuff, DWORD dwCapacity)
        : m_reader(reader), m_cursor(reader), m_pBuff(pBuff), m_pOut(pBuff), m_dwRoom(dwCapacity - 1) {
        const Scan::SKernel& kernel = Scan::GetKernel();
        const auto separator = static_cast<unsigned char>(reader.m_cSeparator);
        // A separator above 0x7F splits characters, which a kernel converts whole.
        if (kernel.collectText != nullptr && separator < 0x80 &&
            Scan::AreOrdinary(separator, static_cast<unsigned char>(reader.m_cPreDelimiter),
                              static_cast<unsigned char>(reader.m_cPostDelimiter)))
            m_pKernel = &kernel;
    }

    /// False when the record does not fit; the read position is then inside it.
    [[gnu::always_inline]] bool Collect() {
        bool fits = true;
        while (fits && !m_bDone && m_cursor.HasNext()) {
            CollectOrdinaryBytes();
            if (m_bDone)
                break;
            CollectRun();
            fits = !m_cursor.HasNext() || CollectNext();
        }
        // If a record ends with the last byte of the fill, refill now, so that HasNextLineData is exact.
        if (m_bDone)
            m_cursor.HasNext();
        m_cursor.Leave();
        return fits;
    }

    /// Ends the last field, if anything was collected. Returns the number of fields with valid entries, 0 if the
    /// record is still to be split.
    [[gnu::always_inline]] DWORD Finish() {
        if (m_pOut == m_pBuff)
            return 0;
        char* const end = reinterpret_cast<char*>(m_pOut);
        *m_pOut++ = SCDataAccessDefine::NULL_CODE;
        // A record that is not longer than the field limit has no field to truncate.
        if (m_pField == nullptr || GetSize() > m_reader.m_dwFieldSizeLimit)
            return 0;
        m_reader.m_ppFieldData[m_dwFields] = m_pField;
        m_reader.m_pFieldLen[m_dwFields] = static_cast<WORD>(end - m_pField);
        return m_dwFields + 1;
    }

    [[gnu::always_inline]] DWORD GetSize() const { return static_cast<DWORD>(m_pOut - m_pBuff); }

    /// Whether collecting stopped inside quotes.
    [[gnu::always_inline]] bool IsQuoteOpen() const { return m_bQuoted && !m_bDone; }

    /// How many bytes at the beginning are in the ANSI code page.
    [[gnu::always_inline]] DWORD CountConverted() const {
        return m_pUnconverted == nullptr ? GetSize() : static_cast<DWORD>(m_pUnconverted - m_pBuff);
    }

private:
    static constexpr unsigned char QUOTE = SCDataAccessDefine::DOUBLE_QUOTATION;
    static constexpr unsigned char SPACE = SCDataAccessDefine::SPACE_CODE;

    [[gnu::always_inline]] void CollectOrdinaryBytes() {
        if (m_pKernel == nullptr)
            return;
        const unsigned char* const next = m_cursor.Bytes();
        unsigned char* const out = m_pOut;
        const Platform::CCodePageTables& page = *m_pPage;
        const bool converts = m_pUnconverted == nullptr && page.IsDoubleByte();
        Scan::SText text{.next = next,
                         .end = next + m_cursor.CountBytes(),
                         .out = reinterpret_cast<char*>(out),
                         .room = m_dwRoom,
                         .separator = static_cast<unsigned char>(m_reader.m_cSeparator),
                         .pre = static_cast<unsigned char>(m_reader.m_cPreDelimiter),
                         .post = static_cast<unsigned char>(m_reader.m_cPostDelimiter),
                         .isQuoted = m_bQuoted,
                         .isUtf8 = page.IsUtf8() && m_pUnconverted == nullptr,
                         .isConverted = true,
                         .hasEnded = false,
                         .blockStarts = converts ? page.m_blockStarts : nullptr,
                         .blocks = converts ? page.m_blocks : nullptr,
                         .saved = 0,
                         .field = reinterpret_cast<char*>(out),
                         .data = m_reader.m_ppFieldData.get(),
                         .lengths = m_reader.m_pFieldLen.get(),
                         .entryCount = out == m_pBuff ? m_reader.m_dwFieldCntLimit : 0,
                         .fieldCount = 0};
        m_pKernel->collectText(text);
        m_cursor.Consume(static_cast<DWORD>(text.next - next));
        m_pOut = reinterpret_cast<unsigned char*>(text.out);
        m_dwRoom -= static_cast<DWORD>(m_pOut - out) + text.saved;
        m_bQuoted = text.isQuoted;
        m_bDone = text.hasEnded;
        if (!text.isConverted)
            LeaveUnconverted(out);
        if (text.hasEnded && text.fieldCount < text.entryCount) {
            m_pField = text.field;
            m_dwFields = text.fieldCount;
        }
    }

    /// Marks the text as unconverted from `from`, unless it is so from an earlier byte.
    [[gnu::always_inline]] void LeaveUnconverted(unsigned char* from) {
        if (m_pUnconverted == nullptr)
            m_pUnconverted = from;
    }

    /// Collects the ordinary bytes that follow, as far as the fill and the capacity reach.
    [[gnu::always_inline]] void CollectRun() {
        const unsigned char* const bytes = m_cursor.Bytes();
        const DWORD room = std::min(m_cursor.CountBytes(), m_dwRoom);
        const unsigned char lowest = m_bQuoted ? SPACE : SPACE + 1;
        const unsigned char separator = m_bQuoted ? QUOTE : static_cast<unsigned char>(m_reader.m_cSeparator);
        const auto pre = static_cast<unsigned char>(m_reader.m_cPreDelimiter);
        unsigned char* const target = m_pOut;
        DWORD count = 0;
        unsigned char all = 0;
        for (; count < room; ++count) {
            const unsigned char byte = bytes[count];
            if (byte < lowest || byte == QUOTE || byte == separator || byte == pre)
                break;
            target[count] = byte;
            all |= byte;
        }
        if (all >= 0x80)
            LeaveUnconverted(target);
        m_cursor.Consume(count);
        m_pOut += count;
        m_dwRoom -= count;
    }

    /// Takes one byte. False when it has to be collected and does not fit.
    [[gnu::always_inline]] bool CollectNext() {
        const unsigned char byte = m_cursor.Get();
        m_cursor.Consume();
        if (m_cursor.IsPreDelimiter(byte) && m_cursor.TakePostDelimiter()) {
            if (m_bQuoted && m_reader.m_bKeepLineEnds)
                return CollectLineEnd();
            m_bDone = !(m_bQuoted && m_reader.m_bQuoteNewLine);
            return true;
        }
        if (!m_bQuoted && byte == static_cast<unsigned char>(m_reader.m_cSeparator))
            return CollectByte(SCDataAccessDefine::NULL_CODE);
        if (byte < SPACE) {
            if (m_bQuoted && m_reader.m_bKeepLineEnds && CFillCursor::IsLineEndByte(byte))
                return CollectByte(byte);
            m_bDone = byte == SCDataAccessDefine::SUB_CODE && m_pOut != m_pBuff;
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

    [[gnu::always_inline]] bool CollectLineEnd() {
        for (const char c : {m_reader.m_cPreDelimiter, m_reader.m_cPostDelimiter})
            if (c != SCDataAccessDefine::NULL_CODE && !CollectByte(static_cast<unsigned char>(c)))
                return false;
        return true;
    }

    [[gnu::always_inline]] bool CollectByte(unsigned char byte) {
        if (m_dwRoom == 0)
            return false;
        if (byte >= 0x80)
            LeaveUnconverted(m_pOut);
        *m_pOut++ = byte;
        --m_dwRoom;
        return true;
    }

    CCsvDataAccess& m_reader;
    CFillCursor m_cursor;
    const Platform::CCodePageTables* const m_pPage = &Platform::GetAnsiTables();
    unsigned char* const m_pBuff;
    unsigned char* m_pOut;                   ///< after the last byte collected
    DWORD m_dwRoom;                          ///< bytes that may still be collected, counted before their conversion
    unsigned char* m_pUnconverted = nullptr; ///< where the unconverted part begins, if any
    const char* m_pField = nullptr;          ///< the last field, when those before it have their entries
    DWORD m_dwFields = 0;                    ///< how many those are
    bool m_bQuoted = false;
    bool m_bDone = false;
    const Scan::SKernel* m_pKernel = nullptr; ///< null without one, or with an unusual separator or line end
};

} // namespace NSTQ::NSTQCore
