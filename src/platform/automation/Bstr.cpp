#include "platform/automation/Bstr.h"

#include "tqcAccess/CodePage.h"
#include "tqcAccess/ComError.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>

namespace NSTQ::Platform {

namespace {

/// The header before the text. Both numbers count units; the room for the NUL is not included.
struct SHeader {
    DWORD capacity;
    DWORD length;
};

/// As the length in bytes has to fit 31 bits, with header and NUL.
constexpr DWORD maxLength = (INT_MAX - sizeof(SHeader)) / sizeof(WCHAR) - 1;
/// Blocks are multiples of this: a number or a date takes one, and a text that grows a little is not moved.
constexpr std::size_t blockSize = 64;

SHeader* HeaderOf(BSTR text) {
    return reinterpret_cast<SHeader*>(text) - 1;
}

void SetLength(BSTR text, DWORD length) {
    HeaderOf(text)->length = length;
    text[length] = u'\0';
}

/// Uninitialised text of length 0; null when there is not enough memory.
BSTR Allocate(DWORD length) {
    if (length > maxLength)
        return nullptr;
    const std::size_t needed = sizeof(SHeader) + (std::size_t{length} + 1) * sizeof(WCHAR);
    const std::size_t size = (needed + blockSize - 1) / blockSize * blockSize;
    void* const block = std::malloc(size);
    if (block == nullptr)
        return nullptr;
    const auto capacity = static_cast<DWORD>((size - sizeof(SHeader)) / sizeof(WCHAR) - 1);
    return reinterpret_cast<BSTR>(new (block) SHeader{capacity, 0} + 1);
}

void Fill(BSTR text, const WCHAR* source, DWORD length) {
    if (source != nullptr && length != 0)
        std::memcpy(text, source, length * sizeof(WCHAR));
    SetLength(text, length);
}

int CheckedLength(std::size_t length) {
    if (length > INT_MAX)
        throw _com_error(E_OUTOFMEMORY);
    return static_cast<int>(length);
}

} // namespace

BSTR SysAllocString(const WCHAR* text) {
    if (text == nullptr)
        return nullptr;
    const std::u16string_view view(text);
    return view.size() > maxLength ? nullptr : SysAllocStringLen(text, static_cast<DWORD>(view.size()));
}

BSTR SysAllocStringLen(const WCHAR* text, DWORD length) {
    const BSTR result = Allocate(length);
    if (result != nullptr)
        Fill(result, text, length);
    return result;
}

bool SysReAllocStringLen(BSTR* text, const WCHAR* source, DWORD length) {
    if (*text != nullptr && length <= HeaderOf(*text)->capacity) {
        Fill(*text, source, length);
        return true;
    }
    const BSTR result = SysAllocStringLen(source, length);
    if (result == nullptr)
        return false;
    SysFreeString(*text);
    *text = result;
    return true;
}

void SysFreeString(BSTR text) {
    if (text != nullptr)
        std::free(HeaderOf(text));
}

DWORD SysStringLen(BSTR text) {
    return text == nullptr ? 0 : HeaderOf(text)->length;
}

CBstr::CBstr(std::u16string_view text) {
    Assign(text);
}

void CBstr::Assign(std::u16string_view text) {
    if (text.size() > maxLength || !SysReAllocStringLen(&m_text, text.data(), static_cast<DWORD>(text.size())))
        throw _com_error(E_OUTOFMEMORY);
}

WCHAR* CBstr::Resize(std::size_t length) {
    if (length > maxLength || !SysReAllocStringLen(&m_text, nullptr, static_cast<DWORD>(length)))
        throw _com_error(E_OUTOFMEMORY);
    return m_text;
}

CBstr BstrFromAnsi(std::string_view text) {
    if (text.empty())
        return CBstr(std::u16string_view{});
    const int length = CheckedLength(text.size());
    const int units = MultiByteToWideChar(CP_ACP, 0, text.data(), length, nullptr, 0);
    CBstr result = CBstr::Attach(SysAllocStringLen(nullptr, static_cast<DWORD>(units)));
    if (result.Get() == nullptr)
        throw _com_error(E_OUTOFMEMORY);
    MultiByteToWideChar(CP_ACP, 0, text.data(), length, result.Get(), units);
    return result;
}

std::string AnsiFromWide(std::u16string_view text) {
    if (text.empty())
        return {};
    const int length = CheckedLength(text.size());
    const int bytes = WideCharToMultiByte(CP_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    if (bytes == 0)
        throw _com_error(E_OUTOFMEMORY);
    std::string result(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), length, result.data(), bytes, nullptr, nullptr);
    return result;
}

} // namespace NSTQ::Platform
