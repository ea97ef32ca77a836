#include "providers/access/CDatabase.h"

#include "platform/automation/Bstr.h"
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
    : m_pFile(std::move(file)), m_strPath(std::move(path)), m_header(ReadHeader(*m_pFile)),
      m_pageCount(static_cast<std::uint32_t>(std::min<std::uint64_t>(m_pFile->Size() / GetFormat().pageSize,
                                                                     std::numeric_limits<std::uint32_t>::max()))) {
    if (m_header.IsJet())
        CheckPassWord(m_header, passWord);
    if (m_header.GetKey() != 0) {
        std::vector<unsigned char> page(GetFormat().pageSize);
        ReadPages(0, page);
        m_pDecoder = MakePageDecoder(m_header, page, passWord);
    }
}

void CDatabase::ReadPages(std::uint32_t first, std::span<unsigned char> target) const {
    m_pFile->ReadAt(first * std::uint64_t{GetFormat().pageSize}, target);
}

void CDatabase::DecodePage(std::uint32_t page, std::span<unsigned char> bytes) const {
    if (m_pDecoder != nullptr && page != 0)
        m_pDecoder->Decode(page, bytes);
}

} // namespace NSTQ::Providers
