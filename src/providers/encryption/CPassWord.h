// The password for one file, in the forms that the schemes need. Wiped when it is destroyed.
#pragma once

#include "tqcAccess/ComError.h"

#include <span>
#include <string>
#include <vector>

namespace NSTQ::Providers {

class CPassWord {
public:
    /// `passWord` is in the ANSI code page; an empty one means none, and then the default password with which
    /// programs encrypt workbooks that have no password. A password that does not fit is refused with `refusal`.
    explicit CPassWord(const std::string& passWord, Platform::HRESULT refusal = Platform::E_FAIL);
    CPassWord(const CPassWord&) = delete;
    CPassWord& operator=(const CPassWord&) = delete;
    ~CPassWord();

    /// UTF-16, little-endian, without NUL.
    std::span<const unsigned char> Wide() const { return m_wide; }
    /// In the ANSI code page.
    std::span<const unsigned char> Ansi() const { return m_ansi; }

    /// Throws CPassWordRefused for a password that does not fit: that one is needed, when none was given,
    /// else that it is wrong.
    [[noreturn]] void Refuse() const;

private:
    bool m_isGiven;
    Platform::HRESULT m_refusal;
    std::vector<unsigned char> m_ansi;
    std::vector<unsigned char> m_wide;
};

} // namespace NSTQ::Providers
