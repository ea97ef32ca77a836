#include "support/AccessPages.h"

#include <stdexcept>

namespace NSTQ::Tests {

std::uint32_t CAccessPages::Add() {
    m_strBytes.resize(m_strBytes.size() + Size());
    return Count() - 1;
}

void CAccessPages::Put(std::uint32_t page, std::size_t offset, std::string_view bytes) {
    if (page >= Count() || offset + bytes.size() > Size())
        throw std::logic_error("outside a page");
    m_strBytes.replace(page * Size() + offset, bytes.size(), bytes);
}

void CAccessPages::Put(std::uint32_t page, std::size_t offset, std::uint64_t value, std::size_t width) {
    Put(page, offset, LittleEndian(value, width));
}

std::uint64_t CAccessPages::Get(std::uint32_t page, std::size_t offset, std::size_t width) const {
    std::uint64_t value = 0;
    for (std::size_t i = width; i-- > 0;)
        value = value << 8 | static_cast<unsigned char>(m_strBytes.at(page * Size() + offset + i));
    return value;
}

void CAccessPages::Encrypt(std::uint32_t page, std::size_t offset, std::size_t size, std::string_view key) {
    Put(page, offset, Rc4(key, m_strBytes.substr(page * Size() + offset, size)));
}

std::size_t CRecordPages::EndOfFree(std::uint32_t page, std::uint64_t rows) const {
    return rows == 0 ? m_pages.Size() : m_pages.Get(page, SlotsAt() + 2 * (rows - 1), 2) & 0x1FFF;
}

SRecordPlace CRecordPages::Add(std::string_view record, unsigned flags, bool isOnNewPage) {
    const std::size_t countAt = SlotsAt() - 2;
    const auto fits = [&](std::uint32_t page) {
        const std::uint64_t rows = m_pages.Get(page, countAt, 2);
        return SlotsAt() + 2 * (rows + 1) + record.size() <= EndOfFree(page, rows) && rows < 255;
    };
    if (isOnNewPage || m_numbers.empty() || !fits(m_numbers.back())) {
        if (record.size() > MostBytes())
            throw std::logic_error("a record longer than a page");
        m_numbers.push_back(m_pages.Add());
        m_pages.Put(m_numbers.back(), 0, 0x0101, 2);
        m_pages.Put(m_numbers.back(), 4, m_owner, 4);
    }
    const std::uint32_t page = m_numbers.back();
    const std::uint64_t row = m_pages.Get(page, countAt, 2);
    const std::size_t start = EndOfFree(page, row) - record.size();
    m_pages.Put(page, start, record);
    m_pages.Put(page, SlotsAt() + 2 * row, start | flags, 2);
    m_pages.Put(page, countAt, row + 1, 2);
    m_pages.Put(page, 2, start - SlotsAt() - 2 * (row + 1), 2);
    return {page, static_cast<std::uint32_t>(row)};
}

void CRecordPages::Put(SRecordPlace place, std::size_t offset, std::string_view bytes) {
    const std::size_t start = m_pages.Get(place.page, SlotsAt() + 2 * place.row, 2) & 0x1FFF;
    m_pages.Put(place.page, start + offset, bytes);
}

} // namespace NSTQ::Tests
