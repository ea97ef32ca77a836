#include "providers/encryption/CDecryptedPackage.h"

#include "providers/common/CByteReader.h"
#include "providers/common/CSourceError.h"
#include "providers/encryption/CAesCipher.h"

#include <algorithm>

namespace NSTQ::Providers {

namespace {

constexpr std::uint64_t sizeFieldSize = 8;

std::uint64_t RoundUp(std::uint64_t size) {
    return (size + CAesCipher::blockSize - 1) / CAesCipher::blockSize * CAesCipher::blockSize;
}

} // namespace

CDecryptedPackage::CDecryptedPackage(std::shared_ptr<IRandomAccess> stream, FDecryptBlock decrypt)
    : m_stream(std::move(stream)), m_decrypt(std::move(decrypt)) {
    std::array<unsigned char, sizeFieldSize> size = {};
    m_stream->ReadAt(0, size);
    m_size = ReadU64(size.data());
    if (m_size > m_stream->Size() || RoundUp(m_size) > m_stream->Size() - sizeFieldSize)
        throw CSourceError("the encrypted package ends too early");
    if (m_size / segmentSize > 0xFFFFFFFF)
        throw CSourceError("the encrypted package is too large");
}

void CDecryptedPackage::ReadAt(std::uint64_t offset, std::span<unsigned char> target) {
    if (offset > m_size || target.size() > m_size - offset)
        throw CSourceError("the encrypted package ends too early");
    while (!target.empty()) {
        const auto rest =
            std::span(Window(offset / windowSize)).subspan(static_cast<std::size_t>(offset % windowSize));
        const auto part = rest.first(std::min(rest.size(), target.size()));
        std::ranges::copy(part, target.begin());
        target = target.subspan(part.size());
        offset += part.size();
    }
}

/// The least recently used window is replaced.
const std::vector<unsigned char>& CDecryptedPackage::Window(std::uint64_t index) {
    auto window = std::ranges::find(m_windows, index, &SWindow::index);
    if (window == m_windows.end()) {
        window = std::ranges::min_element(m_windows, {}, &SWindow::lastUse);
        Fill(*window, index);
    }
    window->lastUse = ++m_useCount;
    return window->bytes;
}

void CDecryptedPackage::Fill(SWindow& window, std::uint64_t index) {
    const std::uint64_t begin = index * windowSize;
    window.index = noWindow;
    window.bytes.resize(static_cast<std::size_t>(std::min(windowSize, RoundUp(m_size) - begin)));
    m_stream->ReadAt(sizeFieldSize + begin, window.bytes);
    auto segment = static_cast<std::uint32_t>(begin / segmentSize);
    for (std::span<unsigned char> rest = window.bytes; !rest.empty(); ++segment) {
        const auto bytes = rest.first(std::min<std::size_t>(rest.size(), segmentSize));
        m_decrypt(segment, bytes);
        rest = rest.subspan(bytes.size());
    }
    window.index = index;
}

} // namespace NSTQ::Providers
