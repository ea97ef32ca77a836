// Collects the values of one column in the buffers of an Arrow array.
#pragma once

#include "CGrowingBuffer.h"
#include "platform/automation/Variant.h"
#include "tqcAccess.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

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
    /// The same for bytes after which blockSize more can be read, at most 65535 of them: short ones, which most are,
    /// are copied without a branch.
    void AppendBlock(const char* bytes, std::size_t size) {
        char* const to = m_bytes.Reserve(size + blockSize);
        if (size <= blockSize)
            std::memcpy(to, bytes, blockSize);
        else
            std::memcpy(to, bytes, size);
        FinishBytes(size);
    }
    static constexpr std::size_t blockSize = 32;
    void AppendText(std::u16string_view text);
    /// A value of another kind of column: a null value is a null. Throws CFault for one that the column cannot
    /// represent.
    void AppendValue(const Platform::VARIANT& value);

    /// How many bytes the values have that were collected.
    std::size_t GetSize() const { return m_bytes.GetSize(); }

    /// Moves what was collected to an array that owns it; then the builder is empty. Throws std::bad_alloc, and then
    /// changes nothing.
    void MoveTo(ArrowArray& array);

private:
    template <class TValue>
    void AppendFixed(TValue value);
    void AppendBit(bool value);
    void AppendDecimal(const Platform::DECIMAL& value);
    void AppendDate(double date);
    void FinishBytes(std::size_t added) {
        m_bytes.Advance(added);
        m_offsets.Append(static_cast<std::int32_t>(m_bytes.GetSize()));
        MarkValid();
    }
    void MarkValid() {
        if (!m_validity.IsEmpty())
            MarkValidBit();
        ++m_length;
    }
    void MarkValidBit();
    std::size_t GetBitSize() const { return static_cast<std::size_t>(m_length / 8 + 1); }

    SColumnForm m_form;
    std::int64_t m_length = 0;
    std::int64_t m_nullCount = 0;
    CGrowingBuffer<std::uint8_t> m_validity; ///< a bit for each value; empty while there is no null
    CGrowingBuffer<std::int32_t> m_offsets;  ///< of text and binary: one more than values
    CGrowingBuffer<char> m_bytes;            ///< texts, or values of fixed width
};

} // namespace NSTQ::NSTQCore
