// The common part of the fuzz targets. A target is one function, LLVMFuzzerTestOneInput: libFuzzer calls it with
// generated inputs, fuzz/replay_main.cpp with the seeds. The first bytes of an input select settings, the rest is the
// content of the file that is read.
#pragma once

#include "support/Chosen.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace NSTQ::Fuzz {

/// Aborts with the text `claim` unless `holds`, so that the fuzzer keeps the input.
void Require(bool holds, const char* claim);

/// Takes values from the beginning of an input.
class CFuzzInput {
public:
    CFuzzInput(const std::uint8_t* data, std::size_t size) : m_rest(reinterpret_cast<const char*>(data), size) {}

    /// The next byte; 0 after the last one, so that a short input has all settings.
    std::uint8_t Byte() {
        if (m_rest.empty())
            return 0;
        const auto byte = static_cast<std::uint8_t>(m_rest.front());
        m_rest.remove_prefix(1);
        return byte;
    }

    /// The next two bytes as a number, the lower byte first.
    std::size_t Number() {
        const std::size_t low = Byte();
        return low | std::size_t{Byte()} << 8;
    }

    /// The next `length` bytes, or all that remain.
    std::string_view Text(std::size_t length) {
        const std::string_view text = m_rest.substr(0, length);
        m_rest.remove_prefix(text.size());
        return text;
    }

    /// The bytes before the next NUL, which is skipped.
    std::string_view Text() {
        const std::string_view text = Text(m_rest.find('\0'));
        m_rest.remove_prefix(m_rest.empty() ? 0 : 1);
        return text;
    }

    bool Flag() { return (Byte() & 1) != 0; }

    /// The lowest bit of the next byte as a flag, and the two bits above it as a kernel.
    bool Flag(Scan::EKernel& kernel) {
        const std::uint8_t byte = Byte();
        kernel = ToKernel(byte >> 1);
        return (byte & 1) != 0;
    }

    /// The kernel that the two lowest bits select; 0 is the one that the library has selected.
    static Scan::EKernel ToKernel(unsigned bits) {
        constexpr std::array kernels = {Scan::EKernel::Scalar, Scan::EKernel::Sse2, Scan::EKernel::Avx2};
        return (bits & 3) == 0 ? Scan::GetKernel().kernel : kernels[(bits & 3) - 1];
    }

    /// One of the choices, by the next byte. Seeds and short inputs mostly select the first one.
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

/// Common line ends, then some whose bytes have another meaning in a grammar.
inline constexpr std::array lineEnds = {
    SLineEnd{'\r', '\n'}, SLineEnd{'\n', '\0'}, SLineEnd{'\r', '\0'}, SLineEnd{'\0', '\x1A'}, SLineEnd{' ', '\t'},
    SLineEnd{'\n', '\n'}, SLineEnd{'a', 'b'},   SLineEnd{',', '\0'},  SLineEnd{'"', '\0'},    SLineEnd{'\x81', '\n'}};
inline constexpr std::array separators = {',', '\t', ';', ' ', 'a', '"', '\x81', '\0'};
inline constexpr std::array codePages = {932U, 1252U, 65001U};
inline constexpr std::array<std::uint32_t, 8> readSizes = {64000, 1, 2, 3, 5, 7, 16, 100};

using Tests::CAnsiPage;

/// A file in memory, which can be opened by its path during the lifetime of this object.
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

/// During its lifetime each read of a file returns at most `size` bytes, and read number `failing`, counted from 1,
/// fails; none if it is 0.
class CReadFaults {
public:
    explicit CReadFaults(std::size_t size, std::size_t failing = 0);
    CReadFaults(const CReadFaults&) = delete;
    CReadFaults& operator=(const CReadFaults&) = delete;
    ~CReadFaults();
};

/// Checks what holds for every row: its fields are one after another in the reader's line buffer, each with its NUL,
/// and none is longer than `maxField`.
void CheckRow(const char* const* fields, const NSTQ::WORD* lengths, std::size_t count, NSTQ::DWORD maxField,
              std::string_view lineBuffer);

} // namespace NSTQ::Fuzz
