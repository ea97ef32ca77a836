// The rows of a sheet or table behind the C interface, with complete values.
#pragma once

#include "CValueRow.h"
#include "IRows.h"
#include "platform/ado/Provider.h"

#include <memory>

namespace NSTQ::NSTQCore {

class CTabularRows final : public IRows {
public:
    /// `source` is kept for as long as the rows.
    CTabularRows(std::shared_ptr<Platform::IDataSource> source, std::u16string_view table);

    const std::vector<SColumn>& GetColumns() const override { return m_columns; }
    std::int64_t GetCount() const override { return m_rows->GetRowCount(); }
    int GetProgress() const override;
    bool MoveNext() override;
    std::span<const tqc_field> GetTexts() override;
    std::span<const tqc_value> GetValues() override;
    std::size_t AppendTo(std::span<CColumnBuilder> builders) override;

private:
    std::u16string_view GetText(const Platform::VARIANT& value);
    tqc_field MakeText(std::size_t column);
    void AppendValue(std::size_t column, CColumnBuilder& builder);
    void AppendUtf8(std::u16string_view text);
    template <class TAction>
    void At(std::size_t column, TAction action) const;

    std::shared_ptr<Platform::IDataSource> m_source;
    std::unique_ptr<Platform::IRowSource> m_rows;
    std::vector<SColumn> m_columns;
    std::int64_t m_read = 0;
    std::vector<char> m_text; ///< the texts of the row, each with a NUL
    std::vector<tqc_field> m_fields;
    Platform::CVariant m_converted;
    CValueRow m_values;
};

} // namespace NSTQ::NSTQCore
