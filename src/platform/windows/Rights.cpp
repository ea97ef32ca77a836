#include "platform/windows/System.h"

#include <sddl.h>

#include <vector>

namespace NSTQ::Platform::Port {

std::wstring GetUserIdentifier() {
    HANDLE token = nullptr;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token))
        return {};
    const CHandle owned(token);
    DWORD size = 0;
    ::GetTokenInformation(token, TokenUser, nullptr, 0, &size);
    std::vector<std::byte> information(size);
    if (size < sizeof(TOKEN_USER) || !::GetTokenInformation(token, TokenUser, information.data(), size, &size))
        return {};
    wchar_t* text = nullptr;
    if (!::ConvertSidToStringSidW(reinterpret_cast<const TOKEN_USER*>(information.data())->User.Sid, &text))
        return {};
    const std::wstring identifier = text;
    ::LocalFree(text);
    return identifier;
}

CPrivateRights::CPrivateRights() {
    const std::wstring user = GetUserIdentifier();
    if (user.empty())
        return;
    // Nothing from the folders above; everything for the user and the system, also for what will be inside.
    const std::wstring rights = L"D:P(A;OICI;FA;;;" + user + L")(A;OICI;FA;;;SY)";
    if (!::ConvertStringSecurityDescriptorToSecurityDescriptorW(rights.c_str(), SDDL_REVISION_1,
                                                                &m_attributes.lpSecurityDescriptor, nullptr))
        m_attributes.lpSecurityDescriptor = nullptr;
}

CPrivateRights::~CPrivateRights() {
    if (m_attributes.lpSecurityDescriptor != nullptr)
        ::LocalFree(m_attributes.lpSecurityDescriptor);
}

} // namespace NSTQ::Platform::Port
