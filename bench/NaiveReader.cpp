#include "NaiveReader.h"

#include "tqcAccess/CodePage.h"

#include <fcntl.h>
#include <unistd.h>

namespace NSTQ::Bench {
namespace {

constexpr int TAB = '\t';
constexpr int SUB = 0x1A;
constexpr int QUOTE = '"';

enum class EState { LeadingBlanks, QuotedStart, Quoted, QuoteInQuoted, Unquoted };

} // namespace

CNaiveReader::CNaiveReader(std::size_t maxFields, std::size_t maxLineSize, std::size_t maxFieldSize)
    : m_buffer(BUFFER_SIZE), m_maxFields(maxFields), m_maxLineSize(maxLineSize), m_maxFieldSize(maxFieldSize),
      m_line(maxLineSize + 1), m_fields(maxFields), m_lengths(maxFields) {}

CNaiveReader::~CNaiveReader() {
    if (m_file >= 0)
        close(m_file);
}

bool CNaiveReader::Open(const std::string& path) {
    m_file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    return m_file >= 0;
}

inline int CNaiveReader::NextByte() {
    if (m_pos == m_size && !Refill())
        return END_OF_FILE;
    return m_buffer[m_pos++];
}

bool CNaiveReader::Refill() {
    const ssize_t got = read(m_file, m_buffer.data(), BUFFER_SIZE);
    m_pos = 0;
    m_size = got > 0 ? static_cast<std::size_t>(got) : 0;
    return m_size > 0;
}

/// Whether the second byte of the line end follows; if so, it is skipped.
bool CNaiveReader::TakePost() {
    if (m_post == 0)
        return true;
    const int c = NextByte();
    if (c != m_post && c != END_OF_FILE)
        --m_pos;
    return c == m_post;
}

void CNaiveReader::EndField(std::size_t length) {
    if (m_count < m_maxFields) {
        char* field = m_line.data() + m_fieldStart;
        if (length > m_maxFieldSize)
            length = Platform::KeptTextLength(field, length, m_maxFieldSize);
        field[length] = '\0';
        m_fields[m_count] = field;
        m_lengths[m_count] = static_cast<std::uint16_t>(length);
        m_fieldStart += length + 1;
    }
    ++m_count;
}

void CNaiveReader::StartRecord() {
    m_count = 0;
    m_fieldStart = 0;
}

bool CNaiveReader::ReadRecord() {
    StartRecord();
    const int separator = m_separator;
    const int pre = m_pre;
    std::size_t counter = 0;
    std::size_t length = 0;
    std::size_t trailing = 0;
    char* field = m_line.data();
    EState state = EState::LeadingBlanks;

    for (int c = NextByte(); c != END_OF_FILE; c = NextByte()) {
        if (++counter > m_maxLineSize)
            return false;
        switch (state) {
        case EState::LeadingBlanks:
            if (c == QUOTE) {
                state = EState::QuotedStart;
                break;
            }
            if (c <= ' ' && c != separator && c != pre && c != TAB && c != SUB)
                break;
            state = EState::Unquoted;
            [[fallthrough]];
        case EState::Unquoted:
            if (c == separator) {
                EndField(length - trailing);
                field = m_line.data() + m_fieldStart;
                length = trailing = 0;
                state = EState::LeadingBlanks;
            } else if (c > ' ') {
                field[length++] = static_cast<char>(c);
                trailing = 0;
            } else if (c == ' ') {
                field[length++] = ' ';
                ++trailing;
            } else if (c == TAB) {
                field[length++] = ' ';
                trailing = 0;
            } else if (c == SUB || (c == pre && TakePost())) {
                EndField(length - trailing);
                return true;
            } else if (length == 0) {
                state = EState::LeadingBlanks;
            }
            break;
        case EState::QuoteInQuoted:
            if (c != QUOTE) {
                state = EState::Unquoted;
                --m_pos;
                --counter;
                break;
            }
            field[length++] = QUOTE;
            trailing = 0;
            state = EState::Quoted;
            break;
        case EState::QuotedStart:
            if (c == ' ')
                break;
            state = EState::Quoted;
            [[fallthrough]];
        case EState::Quoted:
            if (c == QUOTE) {
                state = EState::QuoteInQuoted;
            } else if (c > ' ') {
                field[length++] = static_cast<char>(c);
                trailing = 0;
            } else if (c == ' ') {
                field[length++] = ' ';
                ++trailing;
            } else if (c == TAB) {
                field[length++] = ' ';
                trailing = 0;
            } else if (c == pre && TakePost()) {
                EndField(length - trailing);
                return true;
            }
            break;
        }
    }
    if (counter == 0)
        return false;
    EndField(length - trailing);
    return true;
}

bool CNaiveReader::ReadFixedRecord(const std::vector<std::uint16_t>& widths) {
    StartRecord();
    if (m_pos == m_size && !Refill())
        return false;
    bool goesOn = true;
    for (std::size_t i = 0; i < widths.size() && goesOn; ++i) {
        if (m_fieldStart + widths[i] > m_maxLineSize)
            return false;
        goesOn = ReadColumn(widths[i]);
    }
    if (goesOn)
        SkipLine();
    return true;
}

/// False when the record ends inside the column.
bool CNaiveReader::ReadColumn(std::size_t width) {
    char* field = m_line.data() + m_fieldStart;
    std::size_t length = 0;
    std::size_t trailing = 0;
    bool goesOn = true;
    for (std::size_t taken = 0; taken < width; ++taken) {
        const int c = NextByte();
        if (c == END_OF_FILE)
            break;
        if (c > ' ') {
            field[length++] = static_cast<char>(c);
            trailing = 0;
        } else if (c == SUB || (c == m_pre && TakePost())) {
            goesOn = false;
            break;
        } else if (c == ' ' && length > 0) {
            field[length++] = ' ';
            ++trailing;
        } else if (c == TAB && length > 0) {
            field[length++] = ' ';
            trailing = 0;
        }
    }
    EndField(length - trailing);
    return goesOn;
}

void CNaiveReader::SkipLine() {
    for (int c = NextByte(); c != END_OF_FILE; c = NextByte())
        if (c == m_pre && TakePost())
            return;
}

} // namespace NSTQ::Bench
