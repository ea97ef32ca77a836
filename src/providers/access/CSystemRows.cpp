#include "providers/access/CSystemRows.h"

#include "providers/common/CSourceError.h"

#include <algorithm>

namespace NSTQ::Providers {

using namespace Platform;

std::size_t CSystemRows::Find(std::u16string_view name) const {
    const auto& names = GetColumnNames();
    const auto found = std::ranges::find(names, name);
    if (found == names.end())
        throw CSourceError("a system table has no column " + AnsiFromWide(name));
    return static_cast<std::size_t>(found - names.begin());
}

std::uint32_t CSystemRows::GetNumber(std::size_t column) {
    const VARIANT& value = GetValue(column);
    return value.vt == VT_I4    ? static_cast<std::uint32_t>(value.lVal)
           : value.vt == VT_I2  ? static_cast<std::uint16_t>(value.iVal)
           : value.vt == VT_UI1 ? value.bVal
                                : 0;
}

std::u16string_view CSystemRows::GetText(std::size_t column) {
    const VARIANT& value = GetValue(column);
    return value.vt == VT_BSTR ? BstrView(value.bstrVal) : std::u16string_view();
}

} // namespace NSTQ::Providers
