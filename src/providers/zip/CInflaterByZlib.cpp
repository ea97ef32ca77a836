#include "providers/zip/CInflater.h"

#include <zlib.h>

#include <new>

namespace NSTQ::Providers {

struct CInflater::SState {
    z_stream stream = {};
};

CInflater::CInflater() : m_state(std::make_unique<SState>()) {
    if (inflateInit2(&m_state->stream, -MAX_WBITS) != Z_OK)
        throw std::bad_alloc();
}

CInflater::~CInflater() {
    inflateEnd(&m_state->stream);
}

void CInflater::SetInput(std::span<const unsigned char> bytes) {
    // It only reads them.
    m_state->stream.next_in = const_cast<unsigned char*>(bytes.data());
    m_state->stream.avail_in = static_cast<uInt>(bytes.size());
}

std::size_t CInflater::GetInputLeft() const {
    return m_state->stream.avail_in;
}

CInflater::EState CInflater::Inflate(std::span<unsigned char> target, std::size_t& count) {
    z_stream& stream = m_state->stream;
    stream.next_out = target.data();
    stream.avail_out = static_cast<uInt>(target.size());
    const int result = inflate(&stream, Z_NO_FLUSH);
    count = target.size() - stream.avail_out;
    if (result == Z_MEM_ERROR)
        throw std::bad_alloc();
    if (result == Z_STREAM_END)
        return EState::End;
    // Z_BUF_ERROR: it needs more input.
    return result == Z_OK || result == Z_BUF_ERROR ? EState::GoesOn : EState::Damaged;
}

std::uint32_t CInflater::AddToCrc(std::uint32_t crc, std::span<const unsigned char> bytes) {
    return static_cast<std::uint32_t>(crc32_z(crc, bytes.data(), bytes.size()));
}

} // namespace NSTQ::Providers
