// The read position as local pointers, for the loops over every byte.
//
// Members of the reader would be reloaded after every stored byte, because a char may alias anything. A cursor is a
// local variable whose address never leaves its function, so that its pointers stay in registers; therefore
// everything is inlined and a refill is returned by value.
// Leave stores the position in the reader.
#pragma once

#include "VCTextFileOperater.h"

namespace NSTQ::NSTQCore {

class VCTextFileOperater::CFillCursor {
public:
    [[gnu::always_inline]] explicit CFillCursor(VCTextFileOperater& reader) : m_reader(reader) {
        Take(reader.GetFill());
    }

    /// As HasNextRecordByte.
    [[gnu::always_inline]] bool HasNext() {
        if (m_pNext == m_pEnd) [[unlikely]]
            Take(m_reader.GetNextFill(m_pNext));
        return m_pNext != m_pEnd;
    }
    [[gnu::always_inline]] bool IsNext(char c) { return HasNext() && *m_pNext == static_cast<unsigned char>(c); }
    [[gnu::always_inline]] bool TakeIf(char c) {
        const bool isNext = IsNext(c);
        m_pNext += isNext ? 1 : 0;
        return isNext;
    }
    /// After a pre-delimiter, as TakePostDelimiter.
    [[gnu::always_inline]] bool TakePostDelimiter() {
        if (m_reader.m_cPostDelimiter == 0)
            return true;
        if (!HasNext() || !m_reader.IsPostDelimiter(*m_pNext))
            return false;
        ++m_pNext;
        return true;
    }
    /// For CR and LF, which stay inside quotes together with line ends, whatever line end is set.
    [[gnu::always_inline]] static bool IsLineEndByte(unsigned char byte) {
        return byte == SCDataAccessDefine::CR_CODE || byte == SCDataAccessDefine::LF_CODE;
    }
    [[gnu::always_inline]] bool IsPreDelimiter(unsigned char byte) const { return m_reader.IsPreDelimiter(byte); }

    [[gnu::always_inline]] unsigned char Get() const { return *m_pNext; }
    [[gnu::always_inline]] void Consume(DWORD dwBytes = 1) { m_pNext += dwBytes; }
    /// The bytes of the fill from the next one.
    [[gnu::always_inline]] const unsigned char* Bytes() const { return m_pNext; }
    [[gnu::always_inline]] DWORD CountBytes() const { return static_cast<DWORD>(m_pEnd - m_pNext); }
    /// The next byte's offset in the file.
    [[gnu::always_inline]] LONGLONG GetOffset() const {
        return m_reader.m_llReadOffset + (m_pNext - m_reader.m_pReadBuff.get());
    }
    [[gnu::always_inline]] void Leave() const { m_reader.SetReadPosition(m_pNext); }

private:
    [[gnu::always_inline]] void Take(SFill fill) {
        m_pNext = fill.pNext;
        m_pEnd = fill.pEnd;
    }

    VCTextFileOperater& m_reader;
    const unsigned char* m_pNext;
    const unsigned char* m_pEnd;
};

} // namespace NSTQ::NSTQCore
