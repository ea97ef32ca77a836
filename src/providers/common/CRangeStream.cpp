#include "providers/common/CRangeStream.h"

#include <algorithm>

namespace NSTQ::Providers {

std::size_t CRangeStream::Read(std::span<unsigned char> target) {
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(m_left, target.size()));
    m_source->ReadAt(m_position, target.first(count));
    m_position += count;
    m_left -= count;
    return count;
}

} // namespace NSTQ::Providers
