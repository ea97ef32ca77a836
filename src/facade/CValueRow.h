// The values of one row of a workbook or database with their types. The memory is reused for each row.
#pragma once

#include "CGrowingBuffer.h"
#include "platform/automation/Variant.h"
#include "tqcAccess.h"

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace NSTQ::NSTQCore {

class CValueRow {
public:
    /// Begins a row.
    void Clear() {
        m_values.clear();
        m_texts.Clear();
    }
    void AppendNull() { m_values.push_back({}); }
    /// Throws CFault for a value of an unknown type.
    void Append(const Platform::SExactValue& value);
    /// The row, valid until the next one begins.
    std::span<const tqc_value> Finish();

private:
    void AppendInteger(tqc_value_type type, std::int64_t integer);
    void AppendNumber(tqc_value_type type, double number);
    void AppendDecimal(const Platform::VARIANT& value);
    void AppendDate(double date);
    void AppendText(std::u16string_view text);
    void AppendBytes(std::span<const unsigned char> bytes);
    void Store(tqc_value value, std::size_t length);
    void StoreExact(tqc_value_type type, char* begin, const char* end);

    std::vector<tqc_value> m_values; ///< the pointers to texts are set when all of these are there
    CGrowingBuffer<char> m_texts;    ///< each with a NUL
};

} // namespace NSTQ::NSTQCore
