// The readers, with the few things more that the program needs: where they stand, and what the last row lost.
#pragma once

#include "CFailure.h"

#include "CADOOperater.h"
#include "CCsvDataAccess.h"
#include "CFixDataAccess.h"

#include <algorithm>

namespace NSTQ::Tool {

/// What keeps a row from being taken whole.
struct SRowFault {
    EExitStatus eStatus; ///< of a conversion that stops at it
    const char* what;
    const char* done; ///< what happens to a row that is taken all the same
    const char* hint; ///< may be empty
};

class ISourceReader {
public:
    virtual ~ISourceReader() = default;
    virtual NSTQCore::IDataAccess& Rows() = 0;
    /// The file offset of the next byte to be read, or the number of rows read where there are no bytes. It tells a
    /// read that found nothing from an empty row.
    virtual LONGLONG GetPosition() const = 0;
    /// Whether the positions are offsets in a file.
    virtual bool CountsBytes() const { return true; }
    /// Whether the last row needs no look at its bytes to know that its fields are UTF-8.
    virtual bool IsKnownUtf8() const { return false; }
    /// What the last row lost; null when nothing.
    virtual const SRowFault* GetFault() const { return nullptr; }
};

template <class TReader>
class CSourceReader : public ISourceReader, public TReader {
public:
    using TReader::TReader;

    NSTQCore::IDataAccess& Rows() override { return *this; }
    LONGLONG GetPosition() const override { return TReader::m_llReadOffset + TReader::GetReadBuffPos(); }
};

class CTableReader : public ISourceReader, public NSTQCore::CADOOperater {
public:
    using CADOOperater::CADOOperater;

    NSTQCore::IDataAccess& Rows() override { return *this; }
    LONGLONG GetPosition() const override { return m_llRows; }
    bool GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount) override {
        const bool read = CADOOperater::GetLineData(ppData, pLen, dwCount);
        m_llRows += read ? 1 : 0;
        // The reader cuts such a text, whose last character may have taken less than the limit's last bytes.
        constexpr WORD longest = 65535 - 3;
        m_bMaybeCut = read && std::any_of(pLen, pLen + dwCount, [](WORD length) { return length >= longest; });
        return read;
    }
    bool CountsBytes() const override { return false; }
    /// It is the library that makes the texts.
    bool IsKnownUtf8() const override { return true; }
    const SRowFault* GetFault() const override {
        static constexpr SRowFault fault{ES_LIMIT, "a text of 65532 bytes or more", "cut when it has over 65535", ""};
        return m_bMaybeCut ? &fault : nullptr;
    }

private:
    LONGLONG m_llRows = 0;
    bool m_bMaybeCut = false;
};

} // namespace NSTQ::Tool
