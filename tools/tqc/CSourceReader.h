// The readers, with the few things more that the program needs: where they stand, and what the last row lost.
#pragma once

#include "CFailure.h"

#include "CADOOperater.h"
#include "CCsvDataAccess.h"
#include "CFixDataAccess.h"
#include "SOptions.h"

#include <optional>
#include <string>

namespace NSTQ::Tool {

/// What keeps a row from being taken whole.
struct SRowFault {
    EExitStatus status; ///< of a conversion that stops at it
    std::string what;
    std::string done; ///< what happens to a row that is taken all the same
    std::string hint; ///< may be empty
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
    /// What the last row lost; none when nothing.
    virtual std::optional<SRowFault> GetFault() const { return std::nullopt; }
    /// The file offset of the quote that the last row left open although line ends do not close it; -1 when there is
    /// none.
    virtual LONGLONG GetOpenQuote() const { return -1; }
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
    LONGLONG GetPosition() const override { return m_rowsRead; }
    bool GetLineData(const char**& fields, const WORD*& lengths, DWORD& count) override {
        const bool read = CADOOperater::GetLineData(fields, lengths, count);
        m_rowsRead += read ? 1 : 0;
        return read;
    }
    bool CountsBytes() const override { return false; }
    /// It is the library that makes the texts.
    bool IsKnownUtf8() const override { return true; }
    std::optional<SRowFault> GetFault() const override {
        const LONG column = GetCutColumn();
        if (column < 0)
            return std::nullopt;
        return SRowFault{EExitStatus::Limit,
                         "field " + std::to_string(column + 1) + " has more than " + std::to_string(maxLength) +
                             " bytes",
                         "truncated", "; that is the maximum"};
    }

private:
    LONGLONG m_rowsRead = 0;
};

} // namespace NSTQ::Tool
