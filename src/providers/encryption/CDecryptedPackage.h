// An encrypted OPC package as if it were not: decrypted where it is read, a window of some segments at a time.
#pragma once

#include "providers/encryption/Encryption.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace NSTQ::Providers {

class CDecryptedPackage : public IRandomAccess {
public:
    /// `stream` holds the package's size and the segments: 4096 bytes each, the last one fewer, in multiples of 16.
    /// Throws CSourceError when the size does not fit it.
    CDecryptedPackage(std::shared_ptr<IRandomAccess> stream, FDecryptBlock decrypt);

    std::uint64_t Size() const override { return m_size; }
    void ReadAt(std::uint64_t offset, std::span<unsigned char> target) override;

private:
    static constexpr std::uint64_t segmentSize = 4096;
    static constexpr std::uint64_t windowSize = 16 * segmentSize;
    /// As many as there are positions that are read alternately: the directory, some parts.
    static constexpr std::size_t windowCount = 4;
    static constexpr std::uint64_t noWindow = ~std::uint64_t{0};

    struct SWindow {
        std::uint64_t index = noWindow;
        std::uint64_t lastUse = 0;
        std::vector<unsigned char> bytes;
    };

    const std::vector<unsigned char>& Window(std::uint64_t index);
    void Fill(SWindow& window, std::uint64_t index);

    std::shared_ptr<IRandomAccess> m_stream;
    FDecryptBlock m_decrypt;
    std::uint64_t m_size = 0;
    std::array<SWindow, windowCount> m_windows;
    std::uint64_t m_useCount = 0;
};

} // namespace NSTQ::Providers
