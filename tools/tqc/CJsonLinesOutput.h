// Writes rows as JSON Lines: UTF-8, each row a line that LF ends, an object by the names of the columns, or an array
// when the columns have no names.
//
// Texts of text files are strings. Values of workbooks and databases are written as what they are, without loss:
// numbers with the digits that give the same number back, decimals and currency with all of theirs, true and false,
// null, dates as ISO 8601 strings (2024-05-06T07:08:09), bytes as base64. Infinite numbers and NaNs, which JSON does
// not have, are null. A field that a short row of text lacks is null in an object; fields beyond the last name are
// named F5 and so on by their position.
#pragma once

#include "COutputTarget.h"
#include "CUniqueNames.h"
#include "ITypedOutput.h"
#include "SOptions.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tool {

class CJsonLinesOutput final : public ITypedOutput {
public:
    /// Opens the target `name`. Throws CFailure.
    CJsonLinesOutput(const SOptions& options, const std::string& name);
    /// On standard output the rows written so far remain.
    ~CJsonLinesOutput() override;
    CJsonLinesOutput(const CJsonLinesOutput&) = delete;
    CJsonLinesOutput& operator=(const CJsonLinesOutput&) = delete;

    bool WriteNames(const char* const* names, const WORD* lengths, DWORD count) override;
    void SetColumns(const std::vector<CLibraryRows::SColumn>& columns, bool isNamed) override;
    bool WriteRow(const char* const* fields, const WORD* lengths, DWORD count) override;
    bool WriteValues(std::span<const tqc_value> values, std::string& loss) override;
    std::string TakeNote() override;
    void Close() override { Flush(); }
    void Replace() override { m_target.Replace(); }
    bool IsStandardOutput() const override { return m_target.IsStandardOutput(); }

private:
    /// The end of the buffer, with room for so many bytes, which are far fewer than it has.
    char* Reserve(std::size_t count);
    void Take(const char* end) { m_size = static_cast<std::size_t>(end - m_buffer.data()); }
    void Flush();
    void AddName(std::string_view name);
    void PutKey(std::size_t column);
    void EndRow(std::size_t columns);
    void PutPlain(std::string_view text);
    void PutText(std::string_view text);
    void PutDate(const tqc_value& value);
    void PutBinary(std::string_view bytes);
    bool PutNumber(const tqc_value& value);
    bool PutValue(const tqc_value& value);

    COutputTarget m_target;
    SOptions::EBinary m_binary;
    bool m_hasDateForm;   ///< else ISO 8601
    bool m_isOpen = true; ///< the reader has not closed the pipe
    std::vector<char> m_buffer;
    std::size_t m_size = 0;
    CUniqueNames m_names;
    std::vector<std::string> m_keys; ///< what stands before each value of an object; none for arrays
    bool m_hasLongRow = false;
    std::string m_note;
};

} // namespace NSTQ::Tool
