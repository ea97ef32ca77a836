#include "providers/access/CFieldDecoder.h"

#include "platform/automation/BytesText.h"
#include "providers/access/SCJetText.h"
#include "providers/common/CByteReader.h"
#include "providers/common/CSourceError.h"

#include <array>
#include <bit>
#include <charconv>
#include <chrono>
#include <string_view>

namespace NSTQ::Providers {

using namespace Platform;

namespace {

using CBytes = std::span<const unsigned char>;

/// Precedes a calculated value: sixteen bytes and its length.
constexpr std::size_t calculatedLengthAt = 16;
constexpr std::size_t calculatedAt = 20;
constexpr double firstDay = -657434;                     // 0100-01-01
constexpr double lastMoment = 2958465 + 86399.5 / 86400; // 9999-12-31, before the values that round to the next day
constexpr unsigned char maxScale = 28;
constexpr unsigned char negativeSign = 0x80;

CBytes Unwrap(CBytes bytes) {
    if (bytes.size() < calculatedAt)
        return bytes;
    const std::size_t length = ReadU32(bytes.data() + calculatedLengthAt);
    bytes = bytes.subspan(calculatedAt);
    return bytes.first(std::min(length, bytes.size()));
}

void DecodeGuid(const unsigned char* bytes, CBstr& text) {
    // The first three numbers are little-endian.
    static constexpr signed char order[] = {3, 2, 1, 0, -1, 5, 4, -1, 7, 6, -1, 8, 9, -1, 10, 11, 12, 13, 14, 15};
    WCHAR* to = text.Resize(38);
    *to++ = u'{';
    for (const signed char at : order) {
        if (at < 0)
            *to++ = u'-';
        else
            PutHex(to, bytes[at]);
    }
    *to = u'}';
}

/// `text` is days since 0001-01-01 and parts of a day of 100 nanoseconds, nineteen digits each, with a colon between.
bool DecodeExtendedDate(std::string_view text, CBstr& target) {
    constexpr std::size_t digits = 19;
    constexpr std::int64_t maxDay = 3652058;
    constexpr std::int64_t ticksPerSecond = 10'000'000;
    constexpr std::int64_t ticksPerDay = 86400 * ticksPerSecond;
    std::int64_t day = 0;
    std::int64_t ticks = 0;
    if (text.size() < 2 * digits + 1 || text[digits] != ':')
        return false;
    const char* const middle = text.data() + digits;
    const char* const end = middle + 1 + digits;
    const auto isRead = [](const char* from, const char* behind, std::int64_t& number) {
        return std::from_chars(from, behind, number) == std::from_chars_result{behind, std::errc()};
    };
    if (!isRead(text.data(), middle, day) || !isRead(middle + 1, end, ticks) || day < 0 || day > maxDay ||
        ticks < 0 || ticks >= ticksPerDay)
        return false;
    using namespace std::chrono;
    const year_month_day date(sys_days(year(1) / 1 / 1) + days(day));
    const std::int64_t seconds = ticks / ticksPerSecond;
    WCHAR* to = target.Resize(27);
    const auto put = [&to](std::int64_t number, int width, char16_t behind) {
        for (int i = width; i-- > 0; number /= 10)
            to[i] = static_cast<WCHAR>(u'0' + number % 10);
        to += width;
        if (behind != 0)
            *to++ = behind;
    };
    put(static_cast<int>(date.year()), 4, u'-');
    put(static_cast<unsigned>(date.month()), 2, u'-');
    put(static_cast<unsigned>(date.day()), 2, u' ');
    put(seconds / 3600, 2, u':');
    put(seconds / 60 % 60, 2, u':');
    put(seconds % 60, 2, u'.');
    put(ticks % ticksPerSecond, 7, 0);
    return true;
}

/// 32 bits each, the most significant first.
using CGroups = std::array<std::uint32_t, 4>;

void SetDecimal(VARIANT& value, std::uint8_t scale, bool isNegative, const CGroups& groups) {
    if (groups[0] != 0 || scale > maxScale)
        throw CSourceError("a decimal field has too many digits");
    value.vt = VT_DECIMAL;
    value.decVal.scale = scale;
    value.decVal.sign = isNegative ? negativeSign : 0;
    value.decVal.Hi32 = groups[1];
    value.decVal.Lo64 = std::uint64_t{groups[2]} << 32 | groups[3];
}

/// The sign and groups of four bytes, the most significant group first.
void DecodeNumeric(CBytes bytes, std::uint8_t scale, VARIANT& value) {
    constexpr std::size_t groupSize = sizeof(CGroups::value_type);
    const std::size_t count = (bytes.size() - 1) / groupSize;
    CGroups groups = {};
    if (count == 0 || count > groups.size())
        throw CSourceError("a decimal field has an invalid size");
    for (std::size_t i = 0; i < count; ++i)
        groups[groups.size() - count + i] = ReadU32(bytes.data() + 1 + i * groupSize);
    SetDecimal(value, scale, bytes[0] != 0, groups);
}

/// Its size, scale and sign, then groups of eight bytes, the most significant first, which may have only four.
void DecodeCalculatedNumeric(CBytes bytes, VARIANT& value) {
    constexpr std::size_t header = 4;
    CGroups groups = {};
    std::size_t count = bytes.size() < header ? 0 : (bytes.size() - header) / sizeof(CGroups::value_type);
    if (count == 0)
        throw CSourceError("a calculated decimal field is too short");
    count = std::min(count, groups.size());
    const unsigned char* from = bytes.data() + header;
    for (std::size_t group = groups.size() - count; group < groups.size(); from += 4) {
        if ((groups.size() - group) % 2 != 0) {
            groups[group++] = ReadU32(from);
        } else {
            groups[group + 1] = ReadU32(from);
            groups[group] = ReadU32(from += 4);
            group += 2;
        }
    }
    SetDecimal(value, bytes[2], bytes[3] != 0, groups);
}

void SetText(SFieldValue& target) {
    target.value.vt = VT_BSTR;
    target.value.bstrVal = target.text.Get();
}

void SetDate(VARIANT& value, double date) {
    const bool isDate = date > firstDay - 1 && date < lastMoment;
    value.vt = isDate ? VT_DATE : VT_R8;
    (isDate ? value.date : value.dblVal) = date;
}

void DecodePlainNumber(EColumnType type, CBytes bytes, VARIANT& value) {
    if (bytes.size() < FactsOf(type).size)
        throw CSourceError("a number field is too short");
    const unsigned char* const from = bytes.data();
    switch (type) {
    case EColumnType::Boolean:
        value.vt = VT_BOOL;
        value.boolVal = from[0] != 0 ? VARIANT_TRUE : VARIANT_FALSE;
        break;
    case EColumnType::Byte:
        value.vt = VT_UI1;
        value.bVal = from[0];
        break;
    case EColumnType::Integer:
        value.vt = VT_I2;
        value.iVal = static_cast<std::int16_t>(ReadU16(from));
        break;
    case EColumnType::Long:
        value.vt = VT_I4;
        value.lVal = static_cast<std::int32_t>(ReadU32(from));
        break;
    case EColumnType::Currency:
        value.vt = VT_CY;
        value.cyVal = static_cast<std::int64_t>(ReadU64(from));
        break;
    case EColumnType::Single:
        value.vt = VT_R4;
        value.fltVal = std::bit_cast<float>(ReadU32(from));
        break;
    case EColumnType::Double:
        value.vt = VT_R8;
        value.dblVal = std::bit_cast<double>(ReadU64(from));
        break;
    case EColumnType::DateTime:
        SetDate(value, std::bit_cast<double>(ReadU64(from)));
        break;
    default:
        value.vt = VT_I8;
        value.llVal = static_cast<std::int64_t>(ReadU64(from));
        break;
    }
}

/// A field of variable size may be empty; the value is then null.
void DecodeNumber(const SColumn& column, CBytes bytes, VARIANT& value) {
    if (bytes.empty())
        return;
    if (column.type != EColumnType::Numeric)
        DecodePlainNumber(column.type, bytes, value);
    else if (column.isCalculated)
        DecodeCalculatedNumeric(bytes, value);
    else
        DecodeNumeric(bytes, column.scale, value);
}

} // namespace

std::span<const unsigned char> CFieldDecoder::GetBytes(const SColumn& column, const CRowFields& fields) {
    const auto bytes = fields.GetField(column);
    if (!bytes)
        return {};
    return column.IsLongValue() ? m_longValues.Read(*bytes) : *bytes;
}

SFieldType CFieldDecoder::GetType(const SColumn& column) const {
    SFieldType result = {FactsOf(column.type).dataType};
    const std::size_t unitSize = column.type == EColumnType::Text && !m_database.GetFormat().IsJet3() ? 2 : 1;
    switch (result.type) {
    case EDataType::adNumeric:
        if (column.isCalculated)
            return {EDataType::adDecimal};
        result.numericScale = std::min<unsigned char>(column.scale, maxScale);
        result.precision = column.precision;
        if (column.precision == 0 || column.precision > maxScale || column.precision < column.scale)
            result.precision = maxScale;
        break;
    case EDataType::adVarBinary:
        if (!column.isVariable)
            result.type = EDataType::adBinary;
        break;
    default:
        break;
    }
    if (FactsOf(column.type).size == 0 && !column.IsLongValue() && !column.isCalculated)
        result.definedSize = static_cast<DWORD>(column.length / unitSize);
    return result;
}

void CFieldDecoder::Decode(const SColumn& column, const CRowFields& fields, SFieldValue& target) {
    if (const auto bytes = Read(column, fields, {maxShownBytes, CLongValues::maxShown}, target))
        DecodeBytes(column, *bytes, target);
}

void CFieldDecoder::DecodeExactly(const SColumn& column, const CRowFields& fields, SFieldValue& target) {
    const auto bytes = Read(column, fields, {CLongValues::noLimit, CLongValues::maxSize}, target);
    if (!bytes)
        return;
    const EDataType type = FactsOf(column.type).dataType;
    if (type != EDataType::adVarBinary && type != EDataType::adLongVarBinary) {
        DecodeBytes(column, *bytes, target);
        return;
    }
    target.value.vt = VT_ARRAY | VT_UI1;
    target.bytes = *bytes;
}

std::string_view CFieldDecoder::PutPlain(const SColumn& column, const CRowFields& fields, CPlainTexts& texts,
                                         SFieldValue& scratch) {
    std::string_view text;
    const std::uint64_t budget = m_longValues.GetBudget();
    try {
        const EValueClass valueClass = FactsOf(column.type).valueClass;
        if (valueClass == EValueClass::None)
            return {};
        const auto bytes = Read(column, fields, {maxShownBytes, CPlainTexts::longest}, scratch);
        if (bytes && valueClass == EValueClass::Text) {
            text = PutPlainText(*bytes, texts);
        } else {
            if (bytes)
                DecodeNumber(column, *bytes, scratch.value);
            text = texts.PutValue(scratch.value);
        }
    } catch (const CSourceError&) {
        // The plain way reports it.
    }
    if (text.data() == nullptr)
        m_longValues.RestoreBudget(budget);
    return text;
}

std::string_view CFieldDecoder::PutPlainText(CBytes bytes, CPlainTexts& texts) const {
    if (m_database.GetFormat().IsJet3()) {
        const std::string_view characters(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        return GetTextKind(characters) == ETextKind::Ascii ? texts.PutAscii(characters) : std::string_view();
    }
    char* const to = texts.Reserve(SCJetText::maxBytesPerByte * bytes.size() + SCJetText::textSlack);
    return to == nullptr ? std::string_view() : texts.Take(SCJetText::PutPlain(bytes, to, texts.KeepsLineEnds()));
}

/// The bytes to decode; none when `target` has the value already.
std::optional<CBytes> CFieldDecoder::Read(const SColumn& column, const CRowFields& fields,
                                          const SLongValueLimits& limits, SFieldValue& target) {
    target.bytes = {};
    if (column.type == EColumnType::Boolean && !column.isCalculated) {
        target.value.vt = VT_BOOL;
        target.value.boolVal = fields.IsSet(column) ? VARIANT_TRUE : VARIANT_FALSE;
        return std::nullopt;
    }
    target.value.vt = VT_NULL;
    auto bytes = fields.GetField(column);
    if (!bytes)
        return std::nullopt;
    if (column.IsLongValue()) {
        const bool isBinary = column.type == EColumnType::Ole;
        bytes = m_longValues.Read(*bytes, isBinary ? limits.binary : CLongValues::noLimit, limits.longest);
    }
    return column.isCalculated ? Unwrap(*bytes) : *bytes;
}

void CFieldDecoder::DecodeBytes(const SColumn& column, CBytes bytes, SFieldValue& target) {
    switch (FactsOf(column.type).valueClass) {
    case EValueClass::Text:
        DecodeText(bytes, target);
        return;
    case EValueClass::Number:
    case EValueClass::Date:
        DecodeNumber(column, bytes, target.value);
        return;
    case EValueClass::None:
        break;
    }
    if (column.type == EColumnType::Complex)
        DecodeText({}, target);
    else
        DecodeOther(column, bytes, target);
}

/// Types whose text is made of the bytes.
void CFieldDecoder::DecodeOther(const SColumn& column, CBytes bytes, SFieldValue& target) {
    constexpr std::size_t guidSize = 16;
    const std::string_view characters(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (column.type == EColumnType::Guid && bytes.size() == guidSize)
        DecodeGuid(bytes.data(), target.text);
    else if (column.type != EColumnType::ExtendedDateTime || !DecodeExtendedDate(characters, target.text))
        AssignBytesText(target.text, bytes);
    SetText(target);
}

void CFieldDecoder::DecodeText(CBytes bytes, SFieldValue& target) {
    m_database.DecodeText(bytes, target.text);
    SetText(target);
}

} // namespace NSTQ::Providers
