// The field of a collection that an index or name selects.
#pragma once

#include "platform/ado/Ado.h"
#include "platform/codepage/AsciiCase.h"

#include <algorithm>
#include <string>

namespace NSTQ::Platform {

/// As Fields::GetItem. `fields` is a sequence of fields, accessed by position.
template <class TFields>
Field* FindField(TFields& fields, const VARIANT& index) {
    if (index.vt == VT_I4) {
        if (index.lVal >= 0 && static_cast<std::size_t>(index.lVal) < fields.size())
            return &fields[static_cast<std::size_t>(index.lVal)];
        throw _com_error(adErrItemNotFound, "there is no column " + std::to_string(index.lVal));
    }
    if (index.vt != VT_BSTR)
        throw _com_error(adErrInvalidArgument, "a column is selected by its number or name");
    const std::u16string_view name = BstrView(index.bstrVal);
    const auto found =
        std::ranges::find_if(fields, [&](Field& field) { return IsEqualIgnoringCase(field.GetName(), name); });
    if (found == fields.end())
        throw _com_error(adErrItemNotFound, "there is no column \"" + AnsiFromWide(name) + '"');
    return &*found;
}

} // namespace NSTQ::Platform
