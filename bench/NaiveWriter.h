// CNaiveWriter: what the library's writer is held against: a scalar scan and a copy per field, through a buffer of
// the same size. The output is the same as the library's.
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
    /// Writes ready-made text as it stands.
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
