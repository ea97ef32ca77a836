// CNaiveWriter: a simple writer that the benchmarks compare the library's writer with. It examines each field byte by
// byte and copies it to a buffer of the same size. Its output is the same.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace NSTQ::Bench {

class CNaiveWriter {
public:
    CNaiveWriter();
    ~CNaiveWriter();
    CNaiveWriter(const CNaiveWriter&) = delete;
    CNaiveWriter& operator=(const CNaiveWriter&) = delete;

    bool Open(const std::string& path);
    bool WriteRow(const char* const* fields, const std::uint16_t* lengths, std::size_t count);
    /// Writes text unchanged.
    bool Append(const char* text, std::size_t length);
    bool Close();

private:
    static constexpr std::size_t BUFFER_SIZE = 64000;

    bool Put(char c);
    bool Flush();
    bool WriteField(const char* field, std::size_t length);

    int m_file = -1;
    std::vector<char> m_buffer;
    std::size_t m_fill = 0;
    char m_separator = ',';
};

} // namespace NSTQ::Bench
