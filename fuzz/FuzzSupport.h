// What the fuzz targets share. A target is one function, LLVMFuzzerTestOneInput: libFuzzer calls it with inputs that
// it invents, fuzz/replay_main.cpp with the seeds. The first bytes of an input choose settings, the rest is the
// source.
#pragma once

#include "support/AnsiPage.h"
#include "support/Kernels.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace NSTQ::Fuzz {

/// Ends the program when `claim` does not hold, so that the fuzzer keeps the input.
void Require(bool holds, const char* claim);

/// Hands out an input from its beginning.
class CFuzzInput {
public:
    CFuzzInput(const std::uint8_t* data, std::size_t size) : m_rest(reinterpret_cast<const char*>(data), size) {}

    /// The next byte; 0 once all are used, so that every input has all settings.
    std::uint8_t Byte() {
        if (m_rest.empty())
            return 0;
        const auto byte = static_cast<std::uint8_t>(m_rest.front());
        m_rest.remove_prefix(1);
        return byte;
    }

    /// The next two bytes, the lower one first.
    std::size_t Number() {
        const std::size_t low = Byte();
        return low | std::size_t{Byte()} << 8;
    }

    /// The next bytes, or those that are left.
    std::string_view Text(std::size_t length) {
        const std::string_view text = m_rest.substr(0, length);
        m_rest.remove_prefix(text.size());
        return text;
    }

    /// What stands before the next NUL, which is taken too.
    std::string_view Text() {
        const std::string_view text = Text(m_rest.find('\0'));
        m_rest.remove_prefix(m_rest.empty() ? 0 : 1);
        return text;
    }

    bool Flag() { return (Byte() & 1) != 0; }

    /// A flag and, from the bits above it, the kernel to use.
    bool Flag(Scan::EKernel& kernel) {
        const std::uint8_t byte = Byte();
        kernel = ToKernel(byte >> 1);
        return (byte & 1) != 0;
    }

    /// The two lowest bits as a kernel; the one that the library chooses stands for 0.
    static Scan::EKernel ToKernel(unsigned bits) {
        constexpr std::array kernels = {Scan::EKernel::Scalar, Scan::EKernel::Sse2, Scan::EKernel::Avx2};
        return (bits & 3) == 0 ? Scan::GetKernel().kernel : kernels[(bits & 3) - 1];
    }

    /// One of the choices; the first is the one that seeds and shortened inputs mostly have.
    template <class TChoice, std::size_t size>
    TChoice Pick(const std::array<TChoice, size>& choices) {
        return choices[Byte() % size];
    }

    std::string_view Rest() const { return m_rest; }

private:
    std::string_view m_rest;
};

struct SLineEnd {
    char pre;
    char post;
};

/// Common line ends, then those that clash with the other bytes of a grammar.
inline constexpr std::array lineEnds = {
    SLineEnd{'\r', '\n'}, SLineEnd{'\n', '\0'}, SLineEnd{'\r', '\0'}, SLineEnd{'\0', '\x1A'}, SLineEnd{' ', '\t'},
    SLineEnd{'\n', '\n'}, SLineEnd{'a', 'b'},   SLineEnd{',', '\0'},  SLineEnd{'"', '\0'},    SLineEnd{'\x81', '\n'}};
inline constexpr std::array separators = {',', '\t', ';', ' ', 'a', '"', '\x81', '\0'};
inline constexpr std::array codePages = {932U, 1252U, 65001U};
inline constexpr std::array<std::uint32_t, 8> readSizes = {64000, 1, 2, 3, 5, 7, 16, 100};

using Tests::CAnsiPage;

/// A file without a name in memory, open under a path as long as this lives.
class CMemoryFile {
public:
    explicit CMemoryFile(std::string_view bytes = {});
    CMemoryFile(const CMemoryFile&) = delete;
    CMemoryFile& operator=(const CMemoryFile&) = delete;
    ~CMemoryFile();

    const std::string& Path() const { return m_strPath; }

private:
    int m_iFile;
    std::string m_strPath;
};

/// While this lives, each read of a file delivers at most `size` bytes and the `failing`-th (from 1) fails.
class CReadFaults {
public:
    explicit CReadFaults(std::size_t size, std::size_t failing = 0);
    CReadFaults(const CReadFaults&) = delete;
    CReadFaults& operator=(const CReadFaults&) = delete;
    ~CReadFaults();
};

/// What every row promises: texts with their NULs, one after another, inside the reader's line buffer.
void CheckRow(const char* const* fields, const NSTQ::WORD* lengths, std::size_t count, NSTQ::DWORD maxField,
              std::string_view lineBuffer);

} // namespace NSTQ::Fuzz
