// The grammar of delimited text in the ANSI code page: reads one record field by field into the line buffer.
//
// A kernel of src/scan may take many ordinary fields at a time and leaves the others to this grammar.
#pragma once

#include "CCsvDataAccess.h"
#include "scan/Kernel.h"
#include "text/CFillCursor.h"

#include <algorithm>

namespace NSTQ::NSTQCore {

class CCsvDataAccess::CRecordScan {
public:
    [[gnu::always_inline]] explicit CRecordScan(CCsvDataAccess& reader)
        : m_reader(reader), m_cursor(reader), m_pField(reader.m_pLineBuff.get()),
          m_ppFieldData(reader.m_ppFieldData.get()), m_pFieldLen(reader.m_pFieldLen.get()),
          m_dwFieldCntLimit(reader.m_dwFieldCntLimit), m_dwFieldSizeLimit(reader.m_dwFieldSizeLimit),
          m_dwLimit(reader.m_dwLineSizeLimit), m_cSeparator(reader.m_cSeparator),
          m_bKeepLineEnds(reader.m_bKeepLineEnds) {
        const auto pre = static_cast<unsigned char>(reader.m_cPreDelimiter);
        const auto post = static_cast<unsigned char>(reader.m_cPostDelimiter);
        const Scan::SKernel& kernel = Scan::GetKernel();
        if (kernel.readFields != nullptr && Scan::AreOrdinary(static_cast<unsigned char>(m_cSeparator), pre, post))
            m_pKernel = &kernel;
    }

    /// The line end of the record has been reached.
    [[gnu::always_inline]] bool IsEnded() const { return m_bEnded; }
    [[gnu::always_inline]] bool HasNext() { return m_cursor.HasNext(); }
    [[gnu::always_inline]] bool IsOverLimit() const { return m_dwCounter > m_dwLimit; }
    [[gnu::always_inline]] void Leave() const { m_cursor.Leave(); }

    /// At the start of a field: takes as many fields as a kernel finds ordinary, from number `dwField`, and returns
    /// the number of the next one.
    [[gnu::always_inline]] DWORD ReadOrdinaryFields(DWORD dwField) {
        if (m_pKernel == nullptr || dwField >= m_dwFieldCntLimit || m_dwCounter >= m_dwLimit)
            return dwField;
        const unsigned char* const next = m_cursor.Bytes();
        Scan::SFields fields{.next = next,
                             .end = next + m_cursor.CountBytes(),
                             .field = m_pField,
                             .data = m_ppFieldData + dwField,
                             .lengths = m_pFieldLen + dwField,
                             .entryCount = m_dwFieldCntLimit - dwField,
                             .fieldCount = 0,
                             .room = m_dwLimit - m_dwCounter,
                             .fieldSize = m_dwFieldSizeLimit,
                             .separator = static_cast<unsigned char>(m_cSeparator),
                             .pre = static_cast<unsigned char>(m_reader.m_cPreDelimiter),
                             .post = static_cast<unsigned char>(m_reader.m_cPostDelimiter),
                             .hasEnded = false};
        m_pKernel->readFields(fields);
        m_cursor.Consume(static_cast<DWORD>(fields.next - next));
        m_dwCounter += static_cast<DWORD>(fields.field - m_pField);
        m_pField = fields.field;
        m_bEnded = fields.hasEnded;
        return dwField + fields.fieldCount;
    }

    /// Reads one field. False if there is a SUB instead.
    [[gnu::always_inline]] bool ReadField() {
        m_pEnd = m_pTrimmed = m_pField;
        SkipLeadingBlanks();
        if (m_bEnded)
            return true;
        if (m_cursor.TakeIf(SCDataAccessDefine::SUB_CODE)) {
            m_cursor.HasNext();
            return false;
        }
        if (m_cursor.TakeIf(SCDataAccessDefine::DOUBLE_QUOTATION)) {
            const LONGLONG quote = m_cursor.GetOffset() - 1;
            if (!ReadQuotedPart())
                m_reader.m_llOpenQuote = quote;
        }
        if (!m_bEnded)
            ReadUnquotedPart();
        return true;
    }

    /// Stores the entry of field `dwField`, if there is one, and continues after its separator.
    [[gnu::always_inline]] void EndField(DWORD dwField) {
        if (dwField < m_dwFieldCntLimit) {
            const DWORD length = FinishField(m_pField, static_cast<DWORD>(m_pTrimmed - m_pField), m_dwFieldSizeLimit);
            m_ppFieldData[dwField] = m_pField;
            m_pFieldLen[dwField] = static_cast<WORD>(length);
            m_pField += length + 1;
        }
        if (!m_bEnded)
            m_cursor.TakeIf(m_cSeparator);
        ++m_dwCounter;
    }

private:
    static constexpr char TAB = SCDataAccessDefine::TAB_CODE;
    static constexpr char SPACE = SCDataAccessDefine::SPACE_CODE;
    static constexpr char QUOTE = SCDataAccessDefine::DOUBLE_QUOTATION;

    [[gnu::always_inline]] void SkipLeadingBlanks() {
        while (m_cursor.HasNext() && m_dwCounter < m_dwLimit) {
            const unsigned char byte = m_cursor.Get();
            if (byte > SPACE || byte == static_cast<unsigned char>(m_cSeparator))
                return;
            if (m_cursor.IsPreDelimiter(byte)) {
                m_cursor.Consume();
                m_bEnded = m_cursor.TakePostDelimiter();
                if (m_bEnded)
                    return;
            } else if (byte == TAB || byte == SCDataAccessDefine::SUB_CODE) {
                return;
            } else {
                m_cursor.Consume();
            }
            ++m_dwCounter;
        }
    }

    /// After an opening quote, up to its closing quote, the record's line end, the end of the data or the limit.
    /// False for the last two, which leave the quote open.
    [[gnu::always_inline]] bool ReadQuotedPart() {
        const bool stopsAtAll = m_bKeepLineEnds && m_reader.m_cPreDelimiter > SPACE;
        bool atStart = true;
        while (m_cursor.HasNext() && m_dwCounter < m_dwLimit) {
            const unsigned char byte = m_cursor.Get();
            if (byte > SPACE && byte != QUOTE && !stopsAtAll) {
                StoreRun(QUOTE);
                atStart = false;
                continue;
            }
            m_cursor.Consume();
            if (m_bKeepLineEnds && KeepLineEnd(byte)) {
                atStart = false;
                continue;
            }
            if (byte == SPACE) {
                if (!atStart)
                    *m_pEnd++ = SPACE;
            } else if (byte == QUOTE) {
                if (!m_cursor.TakeIf(QUOTE))
                    return true;
                Store(QUOTE);
                atStart = false;
            } else if (byte == TAB || byte > SPACE) {
                Store(byte == TAB ? SPACE : static_cast<char>(byte));
                atStart = false;
            } else if (!m_reader.m_bQuoteNewLine && m_cursor.IsPreDelimiter(byte) && m_cursor.TakePostDelimiter()) {
                m_bEnded = true;
                return true;
            }
            ++m_dwCounter;
        }
        return false;
    }

    /// Inside quotes, after `byte` has been taken: stores the line end that it begins, or a single CR or LF. False if
    /// it is neither. A line end that exceeds the limit fails the read, so that none is ever truncated.
    [[gnu::always_inline]] bool KeepLineEnd(unsigned char byte) {
        if (m_cursor.IsPreDelimiter(byte) && m_cursor.TakePostDelimiter()) {
            m_dwCounter += m_reader.m_cPostDelimiter == 0 ? 1 : 2;
            for (const char c : {m_reader.m_cPreDelimiter, m_reader.m_cPostDelimiter})
                if (c != SCDataAccessDefine::NULL_CODE && !IsOverLimit())
                    Store(c);
            return true;
        }
        if (!CFillCursor::IsLineEndByte(byte))
            return false;
        Store(static_cast<char>(byte));
        ++m_dwCounter;
        return true;
    }

    /// A field without an opening quote, or the rest after a closing one.
    [[gnu::always_inline]] void ReadUnquotedPart() {
        while (m_cursor.HasNext()) {
            const unsigned char byte = m_cursor.Get();
            if (byte == static_cast<unsigned char>(m_cSeparator) || m_dwCounter >= m_dwLimit)
                return;
            if (byte > SPACE) {
                StoreRun(m_cSeparator);
                continue;
            }
            m_cursor.Consume();
            if (m_cursor.IsPreDelimiter(byte)) {
                m_bEnded = m_cursor.TakePostDelimiter();
            } else if (byte == SPACE) {
                *m_pEnd++ = SPACE;
            } else if (byte == TAB) {
                Store(SPACE);
            } else if (byte == SCDataAccessDefine::SUB_CODE) {
                m_cursor.HasNext();
                m_bEnded = true;
            }
            if (m_bEnded)
                return;
            ++m_dwCounter;
        }
    }

    /// Stores a byte that is not a trailing space.
    [[gnu::always_inline]] void Store(char c) {
        *m_pEnd++ = c;
        m_pTrimmed = m_pEnd;
    }

    /// Stores the next byte, which is above the space, and similar ones that follow, up to `cStop`, the end of
    /// the fill or the limit. In a long run a kernel continues, and then also takes spaces.
    [[gnu::always_inline]] void StoreRun(char cStop) {
        constexpr DWORD longRun = 16;
        const unsigned char* const bytes = m_cursor.Bytes();
        const DWORD room = std::min(m_cursor.CountBytes(), m_dwLimit - m_dwCounter);
        const auto stop = static_cast<unsigned char>(cStop);
        char* const end = m_pEnd;
        DWORD count = 0;
        do {
            end[count] = static_cast<char>(bytes[count]);
            ++count;
        } while (count < room && bytes[count] > SPACE && bytes[count] != stop);
        DWORD spaces = 0;
        if (count >= longRun && m_pKernel != nullptr) {
            count += m_pKernel->copyText(bytes + count, room - count, end + count, stop);
            while (end[count - spaces - 1] == SPACE)
                ++spaces;
        }
        m_cursor.Consume(count);
        m_dwCounter += count;
        m_pEnd = end + count;
        m_pTrimmed = m_pEnd - spaces;
    }

    CCsvDataAccess& m_reader;
    CFillCursor m_cursor;
    char* m_pField;             ///< where the current field begins in the line buffer
    char* m_pEnd = nullptr;     ///< after its last byte
    char* m_pTrimmed = nullptr; ///< after its last byte that is not a trailing space
    const char** const m_ppFieldData;
    WORD* const m_pFieldLen;
    const DWORD m_dwFieldCntLimit;
    const DWORD m_dwFieldSizeLimit;
    const DWORD m_dwLimit;
    DWORD m_dwCounter = 0; ///< bytes taken plus field ends, compared with the line limit
    const char m_cSeparator;
    const bool m_bKeepLineEnds;
    bool m_bEnded = false;
    const Scan::SKernel* m_pKernel = nullptr; ///< null without one, or with an unusual separator or line end
};

} // namespace NSTQ::NSTQCore
