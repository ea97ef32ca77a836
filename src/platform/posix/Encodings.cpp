#include "platform/Port.h"
#include "platform/posix/ErrorTable.h"

#include <iconv.h>

#include <string>

namespace NSTQ::Platform::Port {

namespace {

constexpr DWORD notSupported = 50;

std::string NameOf(unsigned codePage) {
    constexpr unsigned eucJp = 20932;
    constexpr unsigned thai = 874;
    constexpr unsigned isoBase = 28590;
    if (codePage == eucJp)
        return "EUC-JP";
    if (codePage == thai)
        return "WINDOWS-874";
    return codePage > isoBase ? "ISO-8859-" + std::to_string(codePage - isoBase) : "CP" + std::to_string(codePage);
}

class CIconv {
public:
    explicit CIconv(unsigned codePage) : m_handle(::iconv_open("UTF-16BE", NameOf(codePage).c_str())) {}
    CIconv(const CIconv&) = delete;
    CIconv& operator=(const CIconv&) = delete;
    ~CIconv() {
        if (IsOpen())
            ::iconv_close(m_handle);
    }

    bool IsOpen() const { return m_handle != reinterpret_cast<iconv_t>(-1); }

    /// One character. Some pages hold a letter back, as an accent may follow, until that is ended.
    char16_t Decode(std::string_view text) {
        std::string copy(text);
        char* from = copy.data();
        std::size_t left = copy.size();
        unsigned char units[8] = {};
        char* to = reinterpret_cast<char*>(units);
        std::size_t room = sizeof units;
        ::iconv(m_handle, nullptr, nullptr, nullptr, nullptr);
        const std::size_t result = ::iconv(m_handle, &from, &left, &to, &room);
        ::iconv(m_handle, nullptr, nullptr, &to, &room);
        const bool isOne = result == 0 && left == 0 && sizeof units - room == 2;
        return isOne ? static_cast<char16_t>(units[0] << 8 | units[1]) : noCharacter;
    }

private:
    iconv_t m_handle;
};

} // namespace

DWORD DecodeCharacters(unsigned codePage, std::string_view bytes, std::size_t length,
                       std::vector<char16_t>& characters) {
    CIconv iconv(codePage);
    if (!iconv.IsOpen())
        return notSupported;
    characters.clear();
    for (std::size_t at = 0; at < bytes.size(); at += length)
        characters.push_back(iconv.Decode(bytes.substr(at, length)));
    return 0;
}

} // namespace NSTQ::Platform::Port
