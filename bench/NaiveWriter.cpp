#include "NaiveWriter.h"

#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace NSTQ::Bench {

CNaiveWriter::CNaiveWriter() : m_buffer(BUFFER_SIZE) {}

CNaiveWriter::~CNaiveWriter() {
    Close();
}

bool CNaiveWriter::Open(const std::string& path) {
    m_file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    return m_file >= 0;
}

bool CNaiveWriter::Close() {
    if (m_file < 0)
        return false;
    const bool flushed = Flush();
    const bool closed = close(m_file) == 0;
    m_file = -1;
    return flushed && closed;
}

bool CNaiveWriter::Flush() {
    const ssize_t written = write(m_file, m_buffer.data(), m_fill);
    const bool done = written >= 0 && static_cast<std::size_t>(written) == m_fill;
    m_fill = 0;
    return done;
}

inline bool CNaiveWriter::Put(char c) {
    if (m_fill == BUFFER_SIZE && !Flush())
        return false;
    m_buffer[m_fill++] = c;
    return true;
}

bool CNaiveWriter::Append(const char* text, std::size_t length) {
    if (m_fill + length > BUFFER_SIZE && !Flush())
        return false;
    if (length > BUFFER_SIZE)
        return false;
    std::memcpy(m_buffer.data() + m_fill, text, length);
    m_fill += length;
    return true;
}

bool CNaiveWriter::WriteField(const char* field, std::size_t length) {
    bool isSpecial = false;
    for (std::size_t i = 0; i < length && !isSpecial; ++i)
        isSpecial = field[i] == m_separator || field[i] == '"';
    if (!isSpecial)
        return Append(field, length);
    if (!Put('"'))
        return false;
    for (std::size_t i = 0; i < length; ++i) {
        if (field[i] == '"' && !Put('"'))
            return false;
        if (!Put(field[i]))
            return false;
    }
    return Put('"');
}

bool CNaiveWriter::WriteRow(const char* const* fields, const std::uint16_t* lengths, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0 && !Put(m_separator))
            return false;
        if (!WriteField(fields[i], lengths[i]))
            return false;
    }
    return Put('\r') && Put('\n');
}

} // namespace NSTQ::Bench
