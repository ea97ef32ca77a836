// The readers, with additions for the program: their position, and what the last row lost.
#pragma once

#include "CFailure.h"

#include "CADOOperater.h"
#include "CCsvDataAccess.h"
#include "CFixDataAccess.h"
#include "SOptions.h"

#include <optional>
#include <string>

namespace NSTQ::Tool {

/// Why a row is invalid.
struct SRowFault {
    EExitStatus status; ///< exit status of a conversion that stops at it
    std::string what;
    std::string done;            ///< what is done with the row if it is written nevertheless
    std::string hint;            ///< may be empty
    std::optional<DWORD> column; ///< the only one that it concerns, counted from 0; else the whole row
};

/// What a read has returned, and what there is to know about it: all from one call, because there are many.
///
/// A position is the file offset of the next byte to be read, or the number of rows read if there are no bytes.
struct SRecord {
    const char** fields = nullptr; ///< null when the reader has stopped inside a row, at its line limit
    const WORD* lengths = nullptr;
    DWORD count = 0;
    DWORD errorCode = 0;      ///< of a failed read
    bool isComplete = false;  ///< the result of the reader
    bool isKnownUtf8 = false; ///< the fields are known to be UTF-8 without validation
    bool hasFault = false;    ///< ISourceReader::GetFault tells what the row lost
    LONGLONG start = 0;
    LONGLONG end = 0;        ///< the same at the end of the source, but not for an empty row
    LONGLONG openQuote = -1; ///< the file offset of a quote that is not closed, if line ends do not close it
};

class ISourceReader {
public:
    virtual ~ISourceReader() = default;
    virtual NSTQCore::IDataAccess& Rows() = 0;
    virtual void ReadRecord(SRecord& record) = 0;
    /// Whether the positions are offsets in a file.
    virtual bool CountsBytes() const { return true; }
    /// As CCsvDataAccess::CopyPlainRecords; with `mustBeUtf8` only records that are UTF-8. Other readers copy none.
    virtual DWORD CopyPlainRecords(const NSTQCore::CCsvDataAccess::SForm& /*form*/, bool /*mustBeUtf8*/,
                                   DWORD /*maxCount*/, char* /*text*/, DWORD& /*size*/) {
        return 0;
    }
    /// Reads past one line of text, whatever it holds, or one row of a sheet. False if nothing was left to read, or
    /// the source ended without a line end.
    virtual bool SkipLine() = 0;
    /// As often as `count`; returns how often.
    std::uint64_t SkipLines(std::uint64_t count) {
        std::uint64_t done = 0;
        while (done < count && Rows().HasNextLineData() && SkipLine())
            ++done;
        return done;
    }
    /// What the last record lost; none if nothing.
    virtual std::optional<SRowFault> GetFault() const { return std::nullopt; }

    /// The encoding of the file if the reader reads a copy of it in UTF-8, in which its positions count; else empty.
    const std::string& OriginalEncoding() const { return m_originalEncoding; }
    void SetOriginalEncoding(std::string name) { m_originalEncoding = std::move(name); }

private:
    std::string m_originalEncoding;
};

template <class TReader>
class CSourceReader : public ISourceReader, public TReader {
public:
    using TReader::TReader;

    NSTQCore::IDataAccess& Rows() override { return *this; }
    void ReadRecord(SRecord& record) override {
        record = {.start = GetPosition()};
        record.isComplete = this->GetLineData(record.fields, record.lengths, record.count);
        record.errorCode = TReader::m_dwErrorCode;
        record.end = GetPosition();
    }
    bool SkipLine() override { return TReader::SkipPastLineEnd(); }

protected:
    LONGLONG GetPosition() const { return TReader::m_llReadOffset + TReader::m_dwReadBuffPos; }
};

class CTableReader : public ISourceReader, public NSTQCore::CADOOperater {
public:
    using CADOOperater::CADOOperater;

    NSTQCore::IDataAccess& Rows() override { return *this; }
    void ReadRecord(SRecord& record) override {
        record = {.isKnownUtf8 = true, .start = m_rowsRead}; // the library creates the texts
        record.isComplete = GetLineData(record.fields, record.lengths, record.count);
        record.hasFault = GetCutColumn() >= 0;
        record.end = m_rowsRead;
    }
    bool GetLineData(const char**& fields, const WORD*& lengths, DWORD& count) override {
        const bool read = CADOOperater::GetLineData(fields, lengths, count);
        m_rowsRead += read ? 1 : 0;
        return read;
    }
    bool SkipLine() override {
        const char** fields = nullptr;
        const WORD* lengths = nullptr;
        DWORD count = 0;
        return GetLineData(fields, lengths, count) && count > 0;
    }
    bool CountsBytes() const override { return false; }
    std::optional<SRowFault> GetFault() const override {
        const LONG column = GetCutColumn();
        if (column < 0)
            return std::nullopt;
        return SRowFault{EExitStatus::Limit,
                         "field " + std::to_string(column + 1) + " has more than " + std::to_string(maxLength) +
                             " bytes",
                         "truncated", "; that is the maximum", static_cast<DWORD>(column)};
    }

private:
    LONGLONG m_rowsRead = 0;
};

} // namespace NSTQ::Tool
