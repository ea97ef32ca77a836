// The rows of delimited or fixed-length text behind the C interface.
#pragma once

#include "CSourceFile.h"
#include "IRows.h"

#include <memory>
#include <string_view>

namespace NSTQ::NSTQCore {

class CTextRows final : public IRows {
public:
    /// Opens the text of `file`, and reads the row that tells the columns.
    explicit CTextRows(std::shared_ptr<const CSourceFile> file);
    ~CTextRows() override;

    const std::vector<SColumn>& GetColumns() const override { return m_columns; }
    std::int64_t GetCount() const override { return -1; }
    int GetProgress() const override;
    bool MoveNext() override;
    std::span<const tqc_field> GetTexts() override;
    std::span<const tqc_value> GetValues() override;
    std::size_t AppendTo(std::span<CColumnBuilder> builders) override;

private:
    class IReader;
    template <class TReader>
    class CReader;

    /// A record as a reader returns it.
    struct SRecord {
        const char* const* fields = nullptr;
        const WORD* lengths = nullptr;
        DWORD count = 0;
        LONGLONG size = 0; ///< in the file
    };

    static std::unique_ptr<IReader> Open(const CSourceFile& file);
    bool ReadRecord(SRecord& record);
    bool ReadRow();
    void CheckRest();
    std::string_view GetRecordText() const;
    bool IsInPlace() const;
    void TakeFields(const char* text);
    void ConvertFields();
    [[noreturn]] void FailWithInvalidText() const;
    std::string DescribeRow() const;

    std::shared_ptr<const CSourceFile> m_file;
    std::unique_ptr<IReader> m_reader;
    SRecord m_record; ///< the current row
    std::vector<SColumn> m_columns;
    std::vector<tqc_field> m_fields;
    std::vector<tqc_value> m_values;
    std::vector<char> m_text;        ///< the fields in UTF-8 when they cannot stay in the reader's buffer
    const char* m_textEnd = nullptr; ///< of the memory that has the fields, all of which can be read
    std::int64_t m_row = 0;          ///< in the file, from 1
    bool m_hasFirst = false;         ///< the first row, which told the number of columns, is still to be returned
};

} // namespace NSTQ::NSTQCore
