// Decompresses a raw deflate stream, with the library that the build has chosen: ISA-L, or else zlib. Both accept the
// same streams and produce the same bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace NSTQ::Providers {

class CInflater {
public:
    enum class EState { GoesOn, End, Damaged };

    /// Throws std::bad_alloc.
    CInflater();
    CInflater(const CInflater&) = delete;
    CInflater& operator=(const CInflater&) = delete;
    ~CInflater();

    /// The next compressed bytes; the caller keeps them until GetInputLeft is 0.
    void SetInput(std::span<const unsigned char> bytes);
    /// How many bytes of the input have not been taken yet.
    std::size_t GetInputLeft() const;
    /// Decompresses into `target` until it is full, the input is taken or the stream ends; `count` is the number of
    /// bytes that it has received. Throws std::bad_alloc.
    EState Inflate(std::span<unsigned char> target, std::size_t& count);

    /// The CRC-32 of zip archives, continued from `crc`, which is 0 at first.
    static std::uint32_t AddToCrc(std::uint32_t crc, std::span<const unsigned char> bytes);

private:
    struct SState;
    std::unique_ptr<SState> m_state;
};

} // namespace NSTQ::Providers
