#include "providers/zip/CInflater.h"

#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>

namespace NSTQ::Providers {

/// Begins with what ISA-L initializes; its buffers, which are most of it, need no value.
struct CInflater::SState {
    inflate_state stream;
};

CInflater::CInflater() : m_state(new SState) {
    isal_inflate_init(&m_state->stream);
}

CInflater::~CInflater() = default;

void CInflater::SetInput(std::span<const unsigned char> bytes) {
    // It only reads them.
    m_state->stream.next_in = const_cast<unsigned char*>(bytes.data());
    m_state->stream.avail_in = static_cast<std::uint32_t>(bytes.size());
}

std::size_t CInflater::GetInputLeft() const {
    return m_state->stream.avail_in;
}

CInflater::EState CInflater::Inflate(std::span<unsigned char> target, std::size_t& count) {
    inflate_state& stream = m_state->stream;
    stream.next_out = target.data();
    stream.avail_out = static_cast<std::uint32_t>(target.size());
    const int result = isal_inflate(&stream);
    count = target.size() - stream.avail_out;
    if (result < 0 || result == ISAL_NEED_DICT)
        return EState::Damaged;
    return stream.block_state == ISAL_BLOCK_FINISH ? EState::End : EState::GoesOn;
}

std::uint32_t CInflater::AddToCrc(std::uint32_t crc, std::span<const unsigned char> bytes) {
    return crc32_gzip_refl(crc, bytes.data(), bytes.size());
}

} // namespace NSTQ::Providers
