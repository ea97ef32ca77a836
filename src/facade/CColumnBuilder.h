// Collects the values of one column in the buffers of an Arrow array.
#pragma once

#include "platform/automation/Variant.h"
#include "tqcAccess.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::NSTQCore {

/// The type of a column in Arrow's terms.
struct SColumnForm {
    enum class EKind : unsigned char { Int64, Float64, Decimal, Timestamp, Bool, Text, Binary };

    EKind kind = EKind::Text;
    unsigned char precision = 0; ///< of decimals: at most 38 digits
    unsigned char scale = 0;     ///< of decimals: digits after the decimal sign

    /// Arrow's format string.
    std::string GetFormat() const;
};

class CColumnBuilder {
public:
    explicit CColumnBuilder(const SColumnForm& form);

    void AppendNull();
    /// UTF-8 for a column of text, bytes for a binary one.
    void AppendBytes(std::string_view bytes);
    void AppendText(std::u16string_view text);
    /// A value of another kind of column: a null value is a null. Throws CFault for one that the column cannot
    /// represent.
    void AppendValue(const Platform::VARIANT& value);

    /// How many bytes the texts have that were collected.
    std::size_t GetSize() const { return m_bytes.size(); }

    /// Moves what was collected to an array that owns it; then the builder is empty. Throws std::bad_alloc, and then
    /// changes nothing.
    void MoveTo(ArrowArray& array);

private:
    template <class TValue>
    void AppendFixed(TValue value);
    void AppendBit(bool value);
    void AppendDecimal(const Platform::DECIMAL& value);
    void AppendDate(double date);
    void MarkValid();
    char* Reserve(std::size_t size);

    SColumnForm m_form;
    std::int64_t m_length = 0;
    std::int64_t m_nullCount = 0;
    std::vector<std::uint8_t> m_validity; ///< a bit for each value; empty while there is no null
    std::vector<std::int32_t> m_offsets;  ///< of text and binary: one more than values
    std::vector<char> m_bytes;            ///< texts, or values of fixed width
};

} // namespace NSTQ::NSTQCore
