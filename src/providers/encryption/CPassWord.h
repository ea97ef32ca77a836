// The password for one file, in the forms that the schemes need. Wiped when it is done with.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace NSTQ::Providers {

class CPassWord {
public:
    /// `passWord` is in the ANSI code page; an empty one stands for none, and then for the one that programs use to
    /// encrypt a workbook for which nobody gave a password.
    explicit CPassWord(const std::string& passWord);
    CPassWord(const CPassWord&) = delete;
    CPassWord& operator=(const CPassWord&) = delete;
    ~CPassWord();

    /// UTF-16, the lower byte first, no NUL.
    std::span<const unsigned char> Wide() const { return m_wide; }
    /// In the ANSI code page.
    std::span<const unsigned char> Ansi() const { return m_ansi; }

    /// Throws CPassWordRefused (E_FAIL) for a password that does not fit: that one is needed, when none was given,
    /// else that it is wrong.
    [[noreturn]] void Refuse() const;

private:
    bool m_isGiven;
    std::vector<unsigned char> m_ansi;
    std::vector<unsigned char> m_wide;
};

} // namespace NSTQ::Providers
