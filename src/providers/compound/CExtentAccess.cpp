#include "providers/compound/CExtentAccess.h"

#include "providers/common/CSourceError.h"

#include <algorithm>

namespace NSTQ::Providers {

CExtentAccess::CExtentAccess(std::shared_ptr<IRandomAccess> input, const std::vector<SExtent>& extents)
    : m_input(std::move(input)) {
    m_pieces.reserve(extents.size());
    for (const SExtent& extent : extents) {
        if (extent.offset > m_input->Size() || extent.size > m_input->Size() - extent.offset)
            throw CSourceError("the file ends too early");
        m_pieces.push_back({m_size, extent.offset});
        m_size += extent.size;
    }
}

void CExtentAccess::ReadAt(std::uint64_t offset, std::span<unsigned char> target) {
    if (offset > m_size || target.size() > m_size - offset)
        throw CSourceError("a stream ends too early");
    if (target.empty())
        return;
    auto next = std::ranges::upper_bound(m_pieces, offset, {}, &SPiece::begin);
    while (!target.empty()) {
        const SPiece& piece = *(next - 1);
        const std::uint64_t end = next == m_pieces.end() ? m_size : next->begin;
        const auto part =
            target.first(static_cast<std::size_t>(std::min<std::uint64_t>(target.size(), end - offset)));
        m_input->ReadAt(piece.offset + (offset - piece.begin), part);
        target = target.subspan(part.size());
        offset += part.size();
        if (!target.empty())
            ++next;
    }
}

} // namespace NSTQ::Providers
