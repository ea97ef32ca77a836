#include "platform/ado/ConnectionString.h"

#include "SCDataAccessDefine.h"
#include "platform/codepage/AsciiCase.h"

#include <array>
#include <optional>

namespace NSTQ::Platform {

namespace {

using NSTQCore::SCDataAccessDefine;

constexpr std::string_view blanks = " \t\r\n";

std::string_view Trim(std::string_view text) {
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// A form of built strings: provider text, properties text, and the extensions of the paths between them.
struct SBuiltShape {
    const char* prefix;
    const char* properties;
    std::array<std::string_view, 2> extensions;

    bool FitsPath(std::string_view path) const {
        for (const std::string_view extension : extensions) {
            if (!extension.empty() && path.size() >= extension.size() &&
                IsEqualIgnoringCase(path.substr(path.size() - extension.size()), extension))
                return true;
        }
        return false;
    }
};

std::array<SBuiltShape, 4> GetBuiltShapes() {
    using S = SCDataAccessDefine;
    return {{{S::OFFICE2003_PRECONNECTSTRING, S::EXCLE2003_POSTCONNECTSTRING, {".xls"}},
             {S::OFFICE2003_PRECONNECTSTRING, S::ACCESS_POSTCONNECTSTRING, {".mdb"}},
             {S::OFFICE2007_PRECONNECTSTRING, S::EXCLE2007_POSTCONNECTSTRING, {".xls", ".xlsx"}},
             {S::OFFICE2007_PRECONNECTSTRING, S::ACCESS_POSTCONNECTSTRING, {".mdb", ".accdb"}}}};
}

/// Where a built string can be divided into path and password.
struct SSeam {
    SBuiltShape shape;
    std::size_t position;
    std::size_t length;
    bool fits;

    bool IsBetterThan(const std::optional<SSeam>& other) const {
        return !other || (fits != other->fits ? fits : position > other->position);
    }
};

/// The best seam in `text`, the part between the provider text and the final ';'.
void FindSeams(std::string_view text, const SBuiltShape& shape, std::optional<SSeam>& best) {
    const std::string seam = std::string(shape.properties).append(databasePassWordClause);
    for (auto at = text.find(seam); at != std::string_view::npos; at = text.find(seam, at + 1)) {
        const SSeam found{shape, at, seam.size(), shape.FitsPath(text.substr(0, at))};
        if (found.IsBetterThan(best))
            best = found;
    }
}

std::string_view Between(std::string_view text, std::string_view before, std::string_view after) {
    const auto start = text.find(before) + before.size();
    return text.substr(start, text.find(after, start) - start);
}

/// Splits an ordinary string into keys and values.
class CPairReader {
public:
    explicit CPairReader(std::string_view text) : m_text(text) {}

    /// False at the end of the text.
    bool ReadKey(std::string& key) {
        m_pos = m_text.find_first_not_of(" \t\r\n;", m_pos);
        if (m_pos == std::string_view::npos)
            return false;
        key.clear();
        for (;; ++m_pos) {
            if (m_pos == m_text.size() || m_text[m_pos] == ';')
                Fail("a key without a value");
            if (m_text[m_pos] == '=') {
                if (!IsAt(m_pos + 1, '='))
                    break;
                ++m_pos;
            }
            key += m_text[m_pos];
        }
        ++m_pos;
        key = std::string(Trim(key));
        if (key.empty())
            Fail("a value without a key");
        return true;
    }

    std::string ReadValue() {
        m_pos = std::min(m_text.find_first_not_of(blanks, m_pos), m_text.size());
        if (IsAt(m_pos, '"') || IsAt(m_pos, '\''))
            return ReadQuoted();
        const std::string_view rest = m_text.substr(m_pos);
        const std::string_view value = rest.substr(0, rest.find(';'));
        m_pos += value.size();
        return std::string(Trim(value));
    }

private:
    bool IsAt(std::size_t pos, char c) const { return pos < m_text.size() && m_text[pos] == c; }

    std::string ReadQuoted() {
        const char quote = m_text[m_pos++];
        std::string value;
        for (;; ++m_pos) {
            if (m_pos == m_text.size())
                Fail("a quote that is not closed");
            if (m_text[m_pos] == quote) {
                if (!IsAt(m_pos + 1, quote))
                    break;
                ++m_pos;
            }
            value += m_text[m_pos];
        }
        m_pos = std::min(m_text.find_first_not_of(blanks, m_pos + 1), m_text.size());
        if (m_pos != m_text.size() && m_text[m_pos] != ';')
            Fail("text after a closing quote");
        return value;
    }

    [[noreturn]] void Fail(const char* what) const {
        throw _com_error(DB_E_BADINITSTRING,
                         std::string("the connection string holds ") + what + " at byte " + std::to_string(m_pos));
    }

    std::string_view m_text;
    std::size_t m_pos = 0;
};

SConnectionString ParseOrdinary(std::string_view text) {
    SConnectionString result;
    std::string readAhead;
    const std::pair<std::string_view, std::string*> keys[] = {
        {"Provider", &result.provider},
        {"Data Source", &result.dataSource},
        {"Extended Properties", &result.properties},
        {"Jet OLEDB:Database Password", &result.passWord},
        {"Read Ahead", &readAhead},
    };
    CPairReader reader(text);
    for (std::string key; reader.ReadKey(key);) {
        const std::string value = reader.ReadValue();
        for (const auto& [name, target] : keys) {
            if (IsEqualIgnoringCase(key, name))
                *target = value;
        }
    }
    result.readsAhead = IsEqualIgnoringCase(readAhead, "YES");
    return result;
}

} // namespace

std::optional<SConnectionString> ParseBuiltConnectionString(std::string_view text) {
    if (text.empty() || text.back() != ';')
        return std::nullopt;
    std::optional<SSeam> seam;
    std::string_view inner;
    for (const SBuiltShape& shape : GetBuiltShapes()) {
        const std::string_view prefix(shape.prefix);
        if (!text.starts_with(prefix))
            continue;
        inner = text.substr(prefix.size(), text.size() - prefix.size() - 1);
        FindSeams(inner, shape, seam);
    }
    const std::string_view start = Trim(inner).substr(0, 1);
    if (!seam || (!seam->fits && (start == "\"" || start == "'")))
        return std::nullopt;
    SConnectionString result;
    result.provider = Between(seam->shape.prefix, "=", ";");
    result.dataSource = inner.substr(0, seam->position);
    result.properties = Between(seam->shape.properties, "\"", "\"");
    result.passWord = inner.substr(seam->position + seam->length);
    return result;
}

SConnectionString ParseConnectionString(std::string_view text) {
    if (auto built = ParseBuiltConnectionString(text))
        return *std::move(built);
    return ParseOrdinary(text);
}

} // namespace NSTQ::Platform
