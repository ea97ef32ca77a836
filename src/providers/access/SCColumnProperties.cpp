#include "providers/access/SCColumnProperties.h"

#include "platform/codepage/AsciiCase.h"
#include "providers/access/SCJetText.h"
#include "providers/common/CByteReader.h"

#include <algorithm>

namespace NSTQ::Providers {

namespace {

using CBytes = std::span<const unsigned char>;

constexpr std::size_t markSize = 4;
constexpr std::uint16_t namesChunk = 0x80;
constexpr std::uint16_t columnChunk = 0x01;
constexpr std::u16string_view resultType = u"ResultType";

/// The names of all properties come first and are then referred to by their numbers.
std::size_t FindName(CBytes chunk, std::u16string_view name) {
    CByteReader reader(chunk);
    Platform::CBstr text;
    for (std::size_t i = 0; reader.Left() > 0; ++i) {
        SCJetText::DecodeWide(reader.TakeBytes(reader.Take<std::uint16_t>()), text);
        if (text.View() == name)
            return i;
    }
    return std::u16string_view::npos;
}

void TakeResultType(CBytes chunk, std::size_t wanted, std::vector<SColumn>& columns) {
    CByteReader reader(chunk);
    CByteReader head(reader.TakeBytes(std::max<std::size_t>(reader.Take<std::uint32_t>(), 4) - 4));
    Platform::CBstr name;
    SCJetText::DecodeWide(head.TakeBytes(head.Take<std::uint16_t>()), name);
    const auto column = std::ranges::find_if(columns, [&](const SColumn& candidate) {
        return candidate.isCalculated && Platform::IsEqualIgnoringCase(candidate.name, name.View());
    });
    if (column == columns.end())
        return;
    while (reader.Left() > 0) {
        CByteReader entry(reader.TakeBytes(std::max<std::size_t>(reader.Take<std::uint16_t>(), 2) - 2));
        entry.Skip(2);
        const std::size_t property = entry.Take<std::uint16_t>();
        const std::size_t size = entry.Take<std::uint16_t>();
        const auto value = entry.Take<std::uint8_t>();
        if (property == wanted && size == 1 && entry.IsGood())
            column->type = static_cast<EColumnType>(value);
    }
}

} // namespace

void SCColumnProperties::TakeResultTypes(std::span<const unsigned char> block, std::vector<SColumn>& columns) {
    constexpr std::size_t chunkHeader = 6;
    CByteReader reader(block);
    reader.Skip(markSize);
    std::size_t wanted = std::u16string_view::npos;
    while (reader.Left() >= chunkHeader) {
        const std::size_t size = reader.Take<std::uint32_t>();
        const auto kind = reader.Take<std::uint16_t>();
        if (size < chunkHeader)
            return;
        const CBytes chunk = reader.TakeBytes(size - chunkHeader);
        if (kind == namesChunk)
            wanted = FindName(chunk, resultType);
        else if (kind == columnChunk)
            TakeResultType(chunk, wanted, columns);
    }
}

} // namespace NSTQ::Providers
