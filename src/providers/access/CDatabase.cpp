#include "providers/access/CDatabase.h"

#include "providers/access/SCJetText.h"
#include "providers/common/CByteReader.h"
#include "providers/common/CSourceError.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace NSTQ::Providers {

using namespace Platform;

namespace {

CHeaderPage ReadHeader(IRandomAccess& file) {
    std::array<unsigned char, CHeaderPage::size> bytes;
    file.ReadAt(0, bytes);
    return CHeaderPage(bytes);
}

void CheckPassWord(const CHeaderPage& header, const std::string& passWord) {
    const std::u16string stored = header.GetPassWord();
    if (!stored.empty() && stored != BstrFromAnsi(passWord).View())
        throw CPassWordRefused(passWord.empty() ? "it needs a password" : "the password is wrong",
                               DB_SEC_E_AUTH_FAILED);
}

} // namespace

CDatabase::CDatabase(std::shared_ptr<IRandomAccess> file, std::string path, const std::string& passWord)
    : m_file(std::move(file)), m_path(std::move(path)), m_header(ReadHeader(*m_file)) {
    if (m_header.IsJet())
        CheckPassWord(m_header, passWord);
    if (m_header.GetKey() != 0)
        m_decode = m_header.IsJet() ? MakeJetPageDecoder(m_header.GetKey()) : MakeAceDecoder(passWord);
}

/// The encryption info is in the header page, after its own size.
FDecryptBlock CDatabase::MakeAceDecoder(const std::string& passWord) const {
    constexpr std::size_t descriptionAt = 0x299;
    std::vector<unsigned char> page(GetFormat().pageSize);
    ReadPages(0, page);
    CByteReader reader(std::span<const unsigned char>(page).subspan(descriptionAt));
    return MakePageDecoder(m_header.GetKey(), reader.TakeBytes(reader.Take<std::uint16_t>()), passWord);
}

std::uint32_t CDatabase::GetPageCount() const {
    constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
    return static_cast<std::uint32_t>(std::min(m_file->Size() / GetFormat().pageSize, most));
}

void CDatabase::ReadPages(std::uint32_t first, std::span<unsigned char> target) const {
    m_file->ReadAt(first * std::uint64_t{GetFormat().pageSize}, target);
}

void CDatabase::DecodePage(std::uint32_t page, std::span<unsigned char> bytes) const {
    if (m_decode && page != 0)
        m_decode(page, bytes);
}

void CDatabase::DecodeText(std::span<const unsigned char> bytes, CBstr& text) const {
    if (GetFormat().IsJet3())
        SCJetText::DecodeNarrow(bytes, m_header.GetCodePage(), text);
    else
        SCJetText::DecodeWide(bytes, text);
}

} // namespace NSTQ::Providers
