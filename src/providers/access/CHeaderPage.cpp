#include "providers/access/CHeaderPage.h"

#include "providers/access/SCJetText.h"
#include "providers/common/CByteReader.h"
#include "providers/common/CSourceError.h"

#include <bit>
#include <string_view>
#include <utility>

namespace NSTQ::Providers {

namespace {

constexpr std::size_t engineAt = 4;
constexpr std::size_t maskedAt = 0x18;
constexpr std::size_t codePageAt = 0x3C;
constexpr std::size_t keyAt = 0x3E;
constexpr std::size_t passWordAt = 0x42;
constexpr std::size_t passWordSizeJet3 = 20;
constexpr std::size_t passWordSizeJet4 = 40;
constexpr std::size_t creationDateAt = 0x72;
constexpr unsigned latestVersion = 6;

constexpr std::array<unsigned char, CHeaderPage::size - maskedAt> MakeMask() {
    constexpr std::array<unsigned char, 4> key = {0xC7, 0xDA, 0x39, 0x6B};
    std::array<unsigned char, 256> state = {};
    for (unsigned i = 0; i < state.size(); ++i)
        state[i] = static_cast<unsigned char>(i);
    for (unsigned i = 0, j = 0; i < state.size(); ++i) {
        j = (j + state[i] + key[i % key.size()]) & 0xFF;
        std::swap(state[i], state[j]);
    }
    std::array<unsigned char, CHeaderPage::size - maskedAt> mask = {};
    unsigned j = 0;
    for (unsigned i = 1; i <= mask.size(); ++i) {
        j = (j + state[i]) & 0xFF;
        std::swap(state[i], state[j]);
        mask[i - 1] = state[(state[i] + state[j]) & 0xFF];
    }
    return mask;
}

constexpr auto headerMask = MakeMask();

} // namespace

CHeaderPage::CHeaderPage(std::span<const unsigned char, size> bytes) {
    std::copy(bytes.begin(), bytes.end(), m_bytes.begin());
    const std::string_view engine(reinterpret_cast<const char*>(At(engineAt)), 15);
    const bool isJet = engine == "Standard Jet DB";
    if (!isJet && engine != "Standard ACE DB")
        throw CSourceError("not a database");
    if (GetVersion() > latestVersion || isJet != IsJet())
        throw CSourceError("an unknown database version: " + std::to_string(GetVersion()));
    for (std::size_t i = 0; i < headerMask.size(); ++i)
        m_bytes[maskedAt + i] ^= headerMask[i];
}

unsigned CHeaderPage::GetCodePage() const {
    return ReadU16(At(codePageAt));
}

std::uint32_t CHeaderPage::GetKey() const {
    return ReadU32(At(keyAt));
}

std::u16string CHeaderPage::GetPassWord() const {
    if (GetFormat().IsJet3()) {
        Platform::CBstr text;
        SCJetText::DecodeNarrow({At(passWordAt), passWordSizeJet3}, GetCodePage(), text);
        return std::u16string(text.View().substr(0, text.View().find(u'\0')));
    }
    // The password is also masked with the creation date of the database.
    const double date = std::bit_cast<double>(ReadU64(At(creationDateAt)));
    const auto day = date > -1e9 && date < 1e9 ? static_cast<std::uint32_t>(static_cast<std::int32_t>(date)) : 0;
    std::u16string passWord;
    for (std::size_t i = 0; i < passWordSizeJet4; i += sizeof(char16_t)) {
        const auto unit = static_cast<char16_t>(ReadU16(At(passWordAt + i)) ^ (i % 4 == 0 ? day : day >> 16));
        if (unit == u'\0')
            break;
        passWord.push_back(unit);
    }
    return passWord;
}

} // namespace NSTQ::Providers
