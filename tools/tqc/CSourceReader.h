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

class ISourceReader {
public:
    virtual ~ISourceReader() = default;
    virtual NSTQCore::IDataAccess& Rows() = 0;
    /// The file offset of the next byte to be read, or the number of rows read if there are no bytes. It
    /// distinguishes the end of the source from an empty row.
    virtual LONGLONG GetPosition() const = 0;
    /// Whether the positions are offsets in a file.
    virtual bool CountsBytes() const { return true; }
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
    /// Whether the fields of the last row are known to be UTF-8 without validation.
    virtual bool IsKnownUtf8() const { return false; }
    /// What the last row lost; none if nothing.
    virtual std::optional<SRowFault> GetFault() const { return std::nullopt; }
    /// The file offset of a quote that is not closed in the last row, if line ends do not close it; -1 if there is
    /// none.
    virtual LONGLONG GetOpenQuote() const { return -1; }

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
    LONGLONG GetPosition() const override { return TReader::m_llReadOffset + TReader::GetReadBuffPos(); }
    bool SkipLine() override { return TReader::SkipPastLineEnd(); }
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
    bool SkipLine() override {
        const char** fields = nullptr;
        const WORD* lengths = nullptr;
        DWORD count = 0;
        return GetLineData(fields, lengths, count) && count > 0;
    }
    bool CountsBytes() const override { return false; }
    /// The library creates the texts.
    bool IsKnownUtf8() const override { return true; }
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
