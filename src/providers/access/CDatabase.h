// An open database file: its header, its pages and their decryption.
//
// Shared by everything that is read from it; for one thread at a time.
#pragma once

#include "platform/automation/Bstr.h"
#include "providers/access/CHeaderPage.h"
#include "providers/common/ByteSources.h"
#include "providers/encryption/Encryption.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace NSTQ::Providers {

class CDatabase {
public:
    /// `path` names the file in descriptions; `passWord` is in the ANSI code page. Throws CSourceError, with
    /// DB_SEC_E_AUTH_FAILED when the password is missing or wrong.
    CDatabase(std::shared_ptr<IRandomAccess> file, std::string path, const std::string& passWord);

    const std::string& GetPath() const { return m_path; }
    const SJetFormat& GetFormat() const { return m_header.GetFormat(); }
    /// Whole pages; an incomplete one at the end is ignored.
    std::uint32_t GetPageCount() const;
    std::uint64_t GetFileSize() const { return m_file->Size(); }

    /// Fills `target`, which holds some pages, with the pages from `first`, not decoded. Throws
    /// CSourceError.
    void ReadPages(std::uint32_t first, std::span<unsigned char> target) const;
    void DecodePage(std::uint32_t page, std::span<unsigned char> bytes) const;
    /// Converts the text of a name or field. Throws CSourceError for an unsupported code page.
    void DecodeText(std::span<const unsigned char> bytes, Platform::CBstr& text) const;

private:
    FDecryptBlock MakeAceDecoder(const std::string& passWord) const;

    std::shared_ptr<IRandomAccess> m_file;
    std::string m_path;
    CHeaderPage m_header;
    FDecryptBlock m_decode; ///< empty when pages are not encoded
};

} // namespace NSTQ::Providers
