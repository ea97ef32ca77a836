// The bytes of an XML document as UTF-8: UTF-8 is returned unchanged (without BOM), UTF-16 of either byte
// order is converted. Detected by the BOM or, without one, by the bytes of the first '<'.
#pragma once

#include "providers/common/ByteSources.h"

#include <memory>
#include <vector>

namespace NSTQ::Providers {

class CXmlInput {
public:
    explicit CXmlInput(std::unique_ptr<IByteStream> stream) : m_stream(std::move(stream)) {}

    /// Puts UTF-8 into `target` (at least 16 bytes) and returns how many bytes; 0 only at the end. Throws
    /// CSourceError, also for half a surrogate pair.
    std::size_t Read(std::span<unsigned char> target);
    /// Known after the first Read.
    bool IsUtf16() const { return m_encoding != EEncoding::Utf8; }

private:
    enum class EEncoding { Unknown, Utf8, Utf16Little, Utf16Big };
    static constexpr std::size_t rawSize = 1U << 14;

    void Sniff();
    std::size_t TakeRaw(std::span<unsigned char> target);
    std::size_t Convert(std::span<unsigned char> target);
    bool FillRaw();
    char32_t ReadCharacter();

    std::unique_ptr<IByteStream> m_stream;
    EEncoding m_encoding = EEncoding::Unknown;
    std::vector<unsigned char> m_raw;
    std::size_t m_rawBegin = 0;
};

} // namespace NSTQ::Providers
