// Memory that grows at its end and is not filled before it is written, for the buffers of a batch.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace NSTQ::NSTQCore {

/// `TValue` is copied as bytes.
template <class TValue>
class CGrowingBuffer {
public:
    CGrowingBuffer() = default;
    CGrowingBuffer(CGrowingBuffer&& other) noexcept { Swap(other); }
    CGrowingBuffer& operator=(CGrowingBuffer&& other) noexcept {
        CGrowingBuffer moved(std::move(other));
        Swap(moved);
        return *this;
    }
    ~CGrowingBuffer() = default;
    /// Empty, with room for so many values.
    explicit CGrowingBuffer(std::size_t capacity) { Grow(capacity); }

    std::size_t GetSize() const { return m_size; }
    bool IsEmpty() const { return m_size == 0; }
    TValue* GetData() { return m_values.get(); }
    const TValue* GetData() const { return m_values.get(); }
    TValue& Last() { return m_values.get()[m_size - 1]; }

    /// The end of the values, with room for at least `count` more, which Advance then adds.
    TValue* Reserve(std::size_t count) {
        if (m_capacity - m_size < count)
            Grow(m_size + count);
        return m_values.get() + m_size;
    }
    void Clear() { m_size = 0; }
    void Advance(std::size_t count) { m_size += count; }
    void Append(TValue value) {
        *Reserve(1) = value;
        Advance(1);
    }
    /// Adds zeros up to a size.
    void FillTo(std::size_t size) {
        if (size <= m_size)
            return;
        std::memset(Reserve(size - m_size), 0, (size - m_size) * sizeof(TValue));
        m_size = size;
    }

private:
    struct SFree {
        void operator()(TValue* values) const { std::free(values); }
    };

    void Swap(CGrowingBuffer& other) noexcept {
        std::swap(m_values, other.m_values);
        std::swap(m_size, other.m_size);
        std::swap(m_capacity, other.m_capacity);
    }

    void Grow(std::size_t least) {
        constexpr std::size_t smallest = 64;
        const std::size_t capacity = std::max({least, m_capacity + m_capacity / 2, smallest});
        auto* const grown = static_cast<TValue*>(std::realloc(m_values.get(), capacity * sizeof(TValue)));
        if (grown == nullptr)
            throw std::bad_alloc();
        static_cast<void>(m_values.release());
        m_values.reset(grown);
        m_capacity = capacity;
    }

    std::unique_ptr<TValue, SFree> m_values;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

} // namespace NSTQ::NSTQCore
