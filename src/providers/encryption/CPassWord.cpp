#include "providers/encryption/CPassWord.h"

#include "providers/common/CSourceError.h"
#include "providers/encryption/CSecretBytes.h"
#include "tqcAccess/CodePage.h"

namespace NSTQ::Providers {

using namespace Platform;

namespace {

constexpr std::string_view defaultPassWord = "VelvetSweatshop";

} // namespace

CPassWord::CPassWord(const std::string& passWord, HRESULT refusal)
    : m_isGiven(!passWord.empty()), m_refusal(refusal) {
    const std::string_view text = m_isGiven ? std::string_view(passWord) : defaultPassWord;
    m_ansi.assign(text.begin(), text.end());
    const int size = static_cast<int>(text.size());
    std::u16string wide(static_cast<std::size_t>(MultiByteToWideChar(CP_ACP, 0, text.data(), size, nullptr, 0)),
                        u'\0');
    MultiByteToWideChar(CP_ACP, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
    m_wide.reserve(wide.size() * 2);
    for (char16_t& unit : wide) {
        m_wide.push_back(static_cast<unsigned char>(unit));
        m_wide.push_back(static_cast<unsigned char>(unit >> 8));
    }
    Wipe({reinterpret_cast<unsigned char*>(wide.data()), wide.size() * sizeof(char16_t)});
}

CPassWord::~CPassWord() {
    Wipe(m_ansi);
    Wipe(m_wide);
}

void CPassWord::Refuse() const {
    throw CPassWordRefused(m_isGiven ? "the password is wrong" : "encrypted; it needs a password", m_refusal);
}

} // namespace NSTQ::Providers
