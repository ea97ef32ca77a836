// VariantChangeType with any bytes as a value of any type. The first two bytes select the type, the others are the
// value or, for VT_BSTR, the text.
#include "platform/automation/Variant.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

using namespace NSTQ;
using namespace NSTQ::Platform;

namespace {

void Require(bool condition) {
    if (!condition)
        std::abort();
}

bool IsExpected(WCHAR unit) {
    return std::u16string_view(u"0123456789+-./: E#INFDQA").find(unit) != std::u16string_view::npos;
}

/// Checks that a text ends with a NUL and, if it was not copied from another text, is short and has only the
/// characters of numbers and dates.
void CheckText(const CVariant& target, bool isCopy) {
    const auto text = BstrView(target.Value().bstrVal);
    Require(target.Value().bstrVal != nullptr && target.Value().bstrVal[text.size()] == u'\0');
    if (!isCopy)
        Require(text.size() < 64 && std::ranges::all_of(text, IsExpected));
}

/// Any type but VT_DISPATCH, whose pointer cannot be made of bytes.
VARTYPE TypeFrom(std::uint8_t low, std::uint8_t high) {
    const auto type = static_cast<VARTYPE>(low % 32 | (high & 0x20) << 8);
    return type == VT_DISPATCH ? VT_EMPTY : type;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2)
        return 0;
    CVariant source;
    const VARTYPE type = TypeFrom(data[0], data[1]);
    data += 2;
    size -= 2;
    if (type == VT_BSTR) {
        source.Get()->bstrVal = SysAllocStringLen(nullptr, static_cast<DWORD>(size / sizeof(WCHAR)));
        Require(source.Value().bstrVal != nullptr);
        std::copy_n(data, size / sizeof(WCHAR) * sizeof(WCHAR),
                    reinterpret_cast<std::uint8_t*>(source.Get()->bstrVal));
    } else {
        source.Get()->decVal = {};
        std::memcpy(&source.Get()->decVal, data, std::min(size, sizeof(DECIMAL)));
    }
    source.Get()->vt = type;

    static CVariant target; // static, so that texts of all lengths reuse its memory
    if (Failed(VariantChangeType(target.Get(), &source.Value(), 0, VT_BSTR)))
        return 0;
    CheckText(target, type == VT_BSTR);
    CVariant again;
    Require(VariantChangeType(again.Get(), &target.Value(), 0, VT_BSTR) == S_OK);
    Require(BstrView(again.Value().bstrVal) == BstrView(target.Value().bstrVal));
    Require(VariantChangeType(source.Get(), source.Get(), 0, VT_BSTR) == S_OK);
    Require(BstrView(source.Value().bstrVal) == BstrView(target.Value().bstrVal));
    return 0;
}
