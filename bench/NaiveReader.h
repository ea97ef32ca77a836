// CNaiveReader: a simple reader that the benchmarks compare the library's readers with.
//
// It handles one byte at a time with a state machine: it copies the fields to a line buffer, each with its NUL, fills
// in pointers and lengths, removes spaces around fields, turns a doubled quote into one and a TAB into a space, drops
// control bytes and checks the limits. It returns the same records as the library as long as they are within the
// limits; its limit of a record also counts quotes. Fields are valid until the next read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace NSTQ::Bench {

class CNaiveReader {
public:
    CNaiveReader(std::size_t maxFields, std::size_t maxLineSize, std::size_t maxFieldSize);
    ~CNaiveReader();
    CNaiveReader(const CNaiveReader&) = delete;
    CNaiveReader& operator=(const CNaiveReader&) = delete;

    bool Open(const std::string& path);
    /// False at the end of the file and for a record over the limit.
    bool ReadRecord();
    /// The same for fixed-length text whose records end with a line end: columns of `widths` bytes, blanks around
    /// them trimmed. False at the end of the file and for columns that do not fit the line.
    bool ReadFixedRecord(const std::vector<std::uint16_t>& widths);

    /// The number of fields of the record; the arrays have at most as many as the limit.
    std::size_t Count() const { return m_count; }
    const char* const* Fields() const { return m_fields.data(); }
    const std::uint16_t* Lengths() const { return m_lengths.data(); }

private:
    static constexpr int END_OF_FILE = -1;
    static constexpr std::size_t BUFFER_SIZE = 64000;

    int NextByte();
    bool Refill();
    bool TakePost();
    void StartRecord();
    bool ReadColumn(std::size_t width);
    void SkipLine();
    void EndField(std::size_t length);

    int m_file = -1;
    std::vector<unsigned char> m_buffer;
    std::size_t m_pos = 0;
    std::size_t m_size = 0;

    std::size_t m_maxFields;
    std::size_t m_maxLineSize;
    std::size_t m_maxFieldSize;
    int m_separator = ',';
    int m_pre = '\r';
    int m_post = '\n';

    std::vector<char> m_line;
    std::size_t m_fieldStart = 0;
    std::vector<const char*> m_fields;
    std::vector<std::uint16_t> m_lengths;
    std::size_t m_count = 0;
};

} // namespace NSTQ::Bench
