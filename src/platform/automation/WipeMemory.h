// Wipes secrets before their memory is freed, in a way that the compiler may not optimise away, unlike memset.
#pragma once

#include <cstddef>
#include <memory>

namespace NSTQ::Platform {

inline void WipeMemory(void* memory, std::size_t size) {
    volatile unsigned char* at = static_cast<volatile unsigned char*>(memory);
    for (const volatile unsigned char* const end = at + size; at != end; ++at)
        *at = 0;
}

/// Wipes and frees `size` bytes, if there are any.
inline void WipeAndFree(std::unique_ptr<char[]>& buffer, std::size_t size) {
    if (buffer)
        WipeMemory(buffer.get(), size);
    buffer.reset();
}

/// Wipes memory that it does not own when it goes out of scope.
class CWipedMemory {
public:
    CWipedMemory(void* memory, std::size_t size) : m_memory(memory), m_size(size) {}
    CWipedMemory(const CWipedMemory&) = delete;
    CWipedMemory& operator=(const CWipedMemory&) = delete;
    ~CWipedMemory() { WipeMemory(m_memory, m_size); }

private:
    void* m_memory;
    std::size_t m_size;
};

} // namespace NSTQ::Platform
