// What a conversion writes its rows to: an output in one of the formats.
#pragma once

#include "CCsvDataAccess.h"

#include <string>

namespace NSTQ::Tool {

/// Every member throws CFailure when the output cannot be written. Those that return bool return false when the
/// reader has closed the pipe, because it needs no more data.
class IRowOutput {
public:
    virtual ~IRowOutput() = default;

    /// The rows that follow are those of an input, or of a sheet or table of it if that has a name.
    virtual void BeginTable(const std::string& /*input*/, const std::string& /*table*/) {}
    /// No more rows of it follow. False when they have to be written again from the first one, after BeginTable.
    virtual bool EndTable() { return true; }
    /// The names of the columns, in the encoding of the output; before the first row, or never.
    virtual bool WriteNames(const char* const* names, const WORD* lengths, DWORD count) = 0;
    /// A row of texts in the encoding of the output.
    virtual bool WriteRow(const char* const* fields, const WORD* lengths, DWORD count) = 0;
    /// The form in which WriteText takes rows; null if it takes none.
    virtual const NSTQCore::CCsvDataAccess::SForm* TextForm() const { return nullptr; }
    /// Rows as text in that form, 32000 bytes at most, the last one with its line end, too.
    virtual bool WriteText(const char* /*text*/, DWORD /*size*/) { return true; }
    /// What the user is to be told about the names and rows since the last call; empty for nothing.
    virtual std::string TakeNote() { return {}; }

    /// Writes what is still in memory.
    virtual void Close() = 0;
    /// Replaces the target by the closed output.
    virtual void Replace() = 0;
    virtual bool IsStandardOutput() const = 0;
};

} // namespace NSTQ::Tool
