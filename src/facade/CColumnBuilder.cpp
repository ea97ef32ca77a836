#include "CColumnBuilder.h"

#include "CFault.h"
#include "IntegerOf.h"
#include "platform/codepage/Transcode.h"

#include <array>
#include <cmath>
#include <cstring>
#include <memory>

namespace NSTQ::NSTQCore {

using namespace NSTQ::Platform;

namespace {

__extension__ using TInt128 = __int128;
__extension__ using TUint128 = unsigned __int128;

constexpr std::size_t maxValueSize = std::size_t{1} << 30;
constexpr unsigned currencyScale = 4;

/// What an array owns, as its private data.
struct SOwned {
    CGrowingBuffer<std::uint8_t> validity;
    CGrowingBuffer<std::int32_t> offsets;
    CGrowingBuffer<char> bytes;
    const void* buffers[3] = {};
};

void ReleaseArray(ArrowArray* array) {
    delete static_cast<SOwned*>(array->private_data);
    array->release = nullptr;
}

bool HasOffsets(SColumnForm::EKind kind) {
    return kind == SColumnForm::EKind::Text || kind == SColumnForm::EKind::Binary;
}

[[noreturn]] void FailWithOtherType() {
    throw CFault(TQC_UNSUPPORTED, "a value has another type than its column");
}

constexpr std::size_t maxDigits = 38;
constexpr auto powersOfTen = [] {
    std::array<TUint128, maxDigits + 1> powers{1};
    for (std::size_t i = 1; i <= maxDigits; ++i)
        powers[i] = powers[i - 1] * 10;
    return powers;
}();

/// The digits of `value` for a column. Throws CFault for one that is too large and one that would lose digits.
TInt128 Rescale(const DECIMAL& value, const SColumnForm& form) {
    TUint128 digits = TUint128{value.Hi32} << 64 | value.Lo64;
    if (value.scale > form.scale) {
        const TUint128 divisor = powersOfTen[static_cast<std::size_t>(value.scale - form.scale)];
        if (digits % divisor != 0)
            throw CFault(TQC_LIMIT, "a decimal number has more digits after the decimal sign than its column");
        digits /= divisor;
    } else {
        const TUint128 factor = powersOfTen[static_cast<std::size_t>(form.scale - value.scale)];
        // Above this the product may not fit.
        digits = digits < powersOfTen[maxDigits] / factor ? digits * factor : powersOfTen[maxDigits];
    }
    if (digits >= powersOfTen[form.precision])
        throw CFault(TQC_LIMIT, "a decimal number has more digits than its column");
    return value.sign != 0 ? -static_cast<TInt128>(digits) : static_cast<TInt128>(digits);
}

} // namespace

std::string SColumnForm::GetFormat() const {
    switch (kind) {
    case EKind::Int64:
        return "l";
    case EKind::Float64:
        return "g";
    case EKind::Decimal:
        return "d:" + std::to_string(precision) + "," + std::to_string(scale);
    case EKind::Timestamp:
        return "tsu:";
    case EKind::Bool:
        return "b";
    case EKind::Binary:
        return "z";
    default:
        return "u";
    }
}

CColumnBuilder::CColumnBuilder(const SColumnForm& form) : m_form(form) {
    if (HasOffsets(form.kind))
        m_offsets.Append(0);
}

void CColumnBuilder::MarkValidBit() {
    m_validity.FillTo(GetBitSize());
    m_validity.Last() |= static_cast<std::uint8_t>(1U << (m_length % 8));
}

void CColumnBuilder::AppendNull() {
    if (m_validity.IsEmpty()) {
        std::memset(m_validity.Reserve(GetBitSize()), 0xFF, GetBitSize());
        m_validity.Advance(GetBitSize());
        m_validity.Last() = static_cast<std::uint8_t>((1U << (m_length % 8)) - 1);
    }
    m_validity.FillTo(GetBitSize());
    ++m_nullCount;
    switch (m_form.kind) {
    case SColumnForm::EKind::Text:
    case SColumnForm::EKind::Binary:
        m_offsets.Append(m_offsets.Last());
        break;
    case SColumnForm::EKind::Bool:
        m_bytes.FillTo(GetBitSize());
        break;
    default:
        m_bytes.FillTo(m_bytes.GetSize() + (m_form.kind == SColumnForm::EKind::Decimal ? 16 : 8));
    }
    ++m_length;
}

void CColumnBuilder::AppendBytes(std::string_view bytes) {
    if (bytes.size() > maxValueSize)
        throw CFault(TQC_LIMIT, "a value has more than 1 GiB");
    bytes.copy(m_bytes.Reserve(bytes.size()), bytes.size());
    FinishBytes(bytes.size());
}

void CColumnBuilder::AppendText(std::u16string_view text) {
    constexpr std::size_t bytesPerUnit = 3;
    if (text.size() > maxValueSize / bytesPerUnit)
        throw CFault(TQC_LIMIT, "a text has more than 357 million characters");
    const std::size_t room = text.size() * bytesPerUnit;
    FinishBytes(ConvertWideToAnsi(text, m_bytes.Reserve(room), room).length);
}

template <class TValue>
void CColumnBuilder::AppendFixed(TValue value) {
    std::memcpy(m_bytes.Reserve(sizeof value), &value, sizeof value);
    m_bytes.Advance(sizeof value);
    MarkValid();
}

void CColumnBuilder::AppendBit(bool value) {
    m_bytes.FillTo(GetBitSize());
    if (value)
        m_bytes.Last() = static_cast<char>(m_bytes.Last() | static_cast<char>(1U << (m_length % 8)));
    MarkValid();
}

void CColumnBuilder::AppendDecimal(const DECIMAL& value) {
    AppendFixed(Rescale(value, m_form));
}

/// Rounded to the millisecond: the fraction of a day does not represent microseconds exactly, and an even second must
/// remain one.
void CColumnBuilder::AppendDate(double date) {
    constexpr std::int64_t epoch = 25569; // 1970-01-01
    constexpr std::int64_t millisecondsPerDay = 86400000;
    constexpr double limit = 3000000; // beyond the years 100 to 9999 that a date can have
    if (!(std::fabs(date) < limit))
        throw CFault(TQC_UNSUPPORTED, "a date is out of range");
    const double day = std::trunc(date);
    const auto time = std::llround(std::fabs(date - day) * static_cast<double>(millisecondsPerDay));
    AppendFixed((static_cast<std::int64_t>(day) - epoch) * millisecondsPerDay * 1000 + time * 1000);
}

void CColumnBuilder::AppendValue(const VARIANT& value) {
    if (value.vt == VT_NULL || value.vt == VT_EMPTY)
        return AppendNull();
    const auto integer = IntegerOf(value);
    switch (m_form.kind) {
    case SColumnForm::EKind::Int64:
        return integer ? AppendFixed(*integer) : FailWithOtherType();
    case SColumnForm::EKind::Bool:
        return integer ? AppendBit(*integer != 0) : FailWithOtherType();
    case SColumnForm::EKind::Float64:
        if (value.vt == VT_R8)
            return AppendFixed(value.dblVal);
        if (value.vt == VT_R4)
            return AppendFixed(static_cast<double>(value.fltVal));
        return integer ? AppendFixed(static_cast<double>(*integer)) : FailWithOtherType();
    case SColumnForm::EKind::Timestamp:
        // One outside the years 100 to 9999 is a number.
        if (value.vt != VT_DATE && value.vt != VT_R8)
            FailWithOtherType();
        return AppendDate(value.vt == VT_DATE ? value.date : value.dblVal);
    case SColumnForm::EKind::Decimal: {
        if (value.vt == VT_DECIMAL)
            return AppendDecimal(value.decVal);
        if (!integer && value.vt != VT_CY)
            FailWithOtherType();
        const std::int64_t digits = integer ? *integer : value.cyVal;
        const auto magnitude =
            digits < 0 ? ~static_cast<std::uint64_t>(digits) + 1 : static_cast<std::uint64_t>(digits);
        return AppendDecimal({static_cast<std::uint8_t>(integer ? 0 : currencyScale),
                              static_cast<std::uint8_t>(digits < 0 ? 0x80 : 0), 0, magnitude});
    }
    default:
        FailWithOtherType();
    }
}

void CColumnBuilder::MoveTo(ArrowArray& array) {
    auto owned = std::make_unique<SOwned>();
    const bool hasOffsets = HasOffsets(m_form.kind);
    // The next batch will be about as large.
    CGrowingBuffer<std::int32_t> nextOffsets(hasOffsets ? m_offsets.GetSize() : 0);
    CGrowingBuffer<char> nextBytes(m_bytes.GetSize());
    owned->validity = std::move(m_validity);
    owned->offsets = std::move(m_offsets);
    owned->bytes = std::move(m_bytes);
    owned->buffers[0] = m_nullCount == 0 ? nullptr : owned->validity.GetData();
    owned->buffers[1] = hasOffsets ? static_cast<const void*>(owned->offsets.GetData()) : owned->bytes.GetData();
    owned->buffers[2] = hasOffsets ? owned->bytes.GetData() : nullptr;
    array = {};
    array.length = m_length;
    array.null_count = m_nullCount;
    array.n_buffers = hasOffsets ? 3 : 2;
    array.buffers = owned->buffers;
    array.release = &ReleaseArray;
    array.private_data = owned.release();
    m_length = m_nullCount = 0;
    m_validity = {};
    m_bytes = std::move(nextBytes);
    m_offsets = std::move(nextOffsets);
    if (hasOffsets)
        m_offsets.Append(0);
}

} // namespace NSTQ::NSTQCore
