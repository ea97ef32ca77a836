// The texts that a row source hands on as they are must be those of the plain way: the value, its conversion to
// UTF-16 text, and that of this text to a cleaned field.
#pragma once

#include "ado/FieldText.h"
#include "platform/ado/Provider.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace NSTQ::Tests {

class CPlainTextCheck {
public:
    /// Compares the texts of the first columns of the current row, in turn with and without line ends, with their
    /// values, which are only asked for afterwards. The first difference, empty for none.
    std::string CheckRow(Platform::IRowSource& rows, std::size_t mostColumns = SIZE_MAX) {
        m_texts.assign(std::min(rows.GetColumnNames().size(), mostColumns), "not set");
        m_keepsLineEnds = !m_keepsLineEnds;
        rows.GetPlainTexts(m_texts, m_keepsLineEnds);
        m_cells += m_texts.size();
        for (std::size_t i = 0; i < m_texts.size(); ++i) {
            if (m_texts[i].data() == nullptr || m_texts[i].size() > maxField)
                continue;
            ++m_plain;
            if (const std::string_view field = FieldOf(rows.GetValue(i)); field != m_texts[i])
                return " but column " + std::to_string(i) + " is '" + std::string(field) +
                       "' the plain way and not '" + std::string(m_texts[i]) + "'";
        }
        return {};
    }
    std::size_t GetCellCount() const { return m_cells; }
    std::size_t GetPlainCount() const { return m_plain; }

private:
    static constexpr std::size_t maxField = 0xFFFF;

    std::string_view FieldOf(const Platform::VARIANT& value) {
        if (value.vt == Platform::VT_NULL)
            return "no value";
        if (Platform::VariantChangeType(m_wide.Get(), &value, 0, Platform::VT_BSTR) != Platform::S_OK)
            return "no text";
        const auto text = NSTQCore::MakeFieldText(Platform::BstrView(m_wide.Value().bstrVal), m_field.data(),
                                                  maxField, m_keepsLineEnds);
        return text.isCut ? "a cut text" : std::string_view(m_field.data(), text.length);
    }

    bool m_keepsLineEnds = false;
    std::vector<std::string_view> m_texts;
    Platform::CVariant m_wide;
    std::vector<char> m_field = std::vector<char>(maxField + 1);
    std::size_t m_cells = 0;
    std::size_t m_plain = 0;
};

} // namespace NSTQ::Tests
