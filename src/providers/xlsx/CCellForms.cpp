#include "providers/xlsx/CCellForms.h"

#include "providers/xlsx/SCTextEnd.h"

#include <bit>
#include <charconv>
#include <cstring>

namespace NSTQ::Providers {

namespace {

constexpr std::string_view cellBegin = "<c r=\"";
constexpr std::string_view formulaBegin = "<f>";

std::uint64_t Load(const char* at) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, at, sizeof bytes);
    return bytes;
}

} // namespace

constexpr CCellForms::SWord CCellForms::SWord::Make(std::string_view text) {
    SWord word;
    for (const char character : text) {
        word.bytes |= std::uint64_t{static_cast<unsigned char>(character)} << (8 * word.size);
        word.mask |= std::uint64_t{0xFF} << (8 * word.size);
        ++word.size;
    }
    return word;
}

bool CCellForms::SWord::IsAt(const char* at) const {
    return ((Load(at) ^ bytes) & mask) == 0;
}

CCellForms::SWord CCellForms::MakeDigits(std::uint32_t number) {
    char digits[8];
    const char* const end = std::to_chars(digits, std::end(digits), number).ptr;
    return SWord::Make({digits, end});
}

void CCellForms::BeginRow(std::uint32_t row, std::string_view tagEnd) {
    m_row = row;
    m_last = 0;
    m_digits = MakeDigits(row);
    if (tagEnd.size() > maxTagEnd)
        tagEnd = {};
    if (m_tagEnd != tagEnd)
        m_tagEnd = tagEnd;
}

void CCellForms::Learn(std::string_view bytes, const SCell& cell) {
    // Words are compared with their first byte lowest.
    if constexpr (std::endian::native != std::endian::little)
        return;
    const std::uint32_t column = cell.position.column;
    const std::size_t headSize = cellBegin.size() + (column <= 26 ? 1 : 2);
    const std::size_t tailBegin = headSize + m_digits.size;
    const bool hasContent = cell.text.data() != nullptr;
    const std::size_t tailEnd = hasContent ? static_cast<std::size_t>(cell.text.data() - bytes.data()) : bytes.size();
    if (cell.position.row != m_row || column > columnCount || tailEnd <= tailBegin || !bytes.starts_with(cellBegin) ||
        !m_digits.IsAt(bytes.data() + headSize))
        return;
    std::string_view tail = bytes.substr(tailBegin, tailEnd - tailBegin);
    const std::size_t formula = tail.find(formulaBegin);
    if (formula != tail.npos)
        tail = tail.substr(0, formula + formulaBegin.size());
    // Of repeated references the last one counts.
    if (tail.front() != '"' || tail.find("r=") != tail.npos ||
        tail.size() > SForm::maxTailWords * sizeof(std::uint64_t))
        return;
    if (m_forms.size() <= column)
        m_forms.resize(column + 1);
    m_forms[m_last].next = column;
    m_last = column;
    SForm& form = m_forms[column];
    form.head = SWord::Make(bytes.substr(0, headSize));
    form.size = static_cast<std::uint32_t>(headSize + tail.size());
    form.column = column;
    form.style = cell.style;
    form.kind = cell.kind;
    form.hasFormula = formula != tail.npos;
    form.hasContent = hasContent;
    form.isInline = bytes.substr(0, tailEnd).ends_with("<t>");
    for (form.tailCount = 0; !tail.empty(); ++form.tailCount) {
        form.tail[form.tailCount] = SWord::Make(tail.substr(0, sizeof(std::uint64_t)));
        tail.remove_prefix(form.tail[form.tailCount].size);
    }
}

CCellForms::SRead CCellForms::Read(std::string_view ahead, std::span<SCell> cells) {
    SRead read;
    const char* at = ahead.data();
    const char* const end = at + ahead.size();
    SForm* last = &m_forms[m_last];
    while (at != end && read.count < cells.size()) {
        SForm* const form = FindForm(at, *last);
        if (form == nullptr) {
            const char* const row = SkipRowTags(at, end);
            if (row == nullptr)
                break;
            at = row;
            last = &m_forms.front();
            continue;
        }
        if (!IsStartAt(at, *form))
            break;
        const char* next = at + form->size + m_digits.size;
        if (form->hasFormula)
            next = SkipFormula(next);
        if (next == nullptr)
            break;
        if (form->hasContent) {
            SCell& cell = cells[read.count];
            next = SkipContent(next, *form, cell.text);
            if (next == nullptr)
                break;
            cell.position = {m_row, form->column};
            cell.kind = form->kind;
            cell.style = form->style;
            ++read.count;
        }
        at = next;
        last = form;
    }
    m_last = last->column;
    read.size = static_cast<std::size_t>(at - ahead.data());
    read.position = {m_row, m_last};
    return read;
}

/// The form of the column of the cell; null when it has none, or nothing of a known form is there.
CCellForms::SForm* CCellForms::FindForm(const char* at, SForm& last) {
    SForm& expected = m_forms[last.next];
    if (expected.head.IsAt(at) && expected.column != 0) [[likely]]
        return &expected;
    constexpr SWord begin = SWord::Make(cellBegin);
    if (!begin.IsAt(at))
        return nullptr;
    std::uint32_t column = 0;
    for (const char* letter = at + begin.size; *letter >= 'A' && *letter <= 'Z' && column <= columnCount; ++letter)
        column = column * 26 + static_cast<std::uint32_t>(*letter - 'A' + 1);
    if (column >= m_forms.size() || m_forms[column].column == 0 || !m_forms[column].head.IsAt(at))
        return nullptr;
    last.next = column;
    return &m_forms[column];
}

/// Whether a cell of the current row begins with the bytes of its form.
bool CCellForms::IsStartAt(const char* at, const SForm& form) const {
    at += form.head.size;
    if (!m_digits.IsAt(at))
        return false;
    at += m_digits.size;
    for (std::size_t i = 0; i < form.tailCount; ++i, at += sizeof(std::uint64_t))
        if (!form.tail[i].IsAt(at))
            return false;
    return true;
}

/// From the text of a formula to that of its value.
const char* CCellForms::SkipFormula(const char* at) {
    static constexpr SWord end = SWord::Make("</f><v>");
    for (at = SCTextEnd::Find(at); *at != '<' && *at != '\0';)
        at = SCTextEnd::Find(at + 1);
    return end.IsAt(at) ? at + end.size : nullptr;
}

const char* CCellForms::SkipContent(const char* at, const SForm& form, std::string_view& text) {
    const char* const end = SCTextEnd::Find(at);
    text = {at, end};
    if (form.isInline) {
        static constexpr SWord ends[] = {SWord::Make("</t></is"), SWord::Make("></c>")};
        return ends[0].IsAt(end) && ends[1].IsAt(end + ends[0].size) ? end + ends[0].size + ends[1].size : nullptr;
    }
    static constexpr SWord valueEnd = SWord::Make("</v></c>");
    const bool isTrimmed = at != end && *at > ' ' && end[-1] > ' ';
    return valueEnd.IsAt(end) && (isTrimmed || form.kind == ECellKind::Text) ? end + valueEnd.size : nullptr;
}

/// The end tag of the row and the start tag of the next one.
const char* CCellForms::SkipRowTags(const char* at, const char* end) {
    static constexpr SWord tags[] = {SWord::Make("</row><r"), SWord::Make("ow r=\"")};
    if (m_tagEnd.empty() || m_row == maxRow || !tags[0].IsAt(at) || !tags[1].IsAt(at + tags[0].size))
        return nullptr;
    at += tags[0].size + tags[1].size;
    const SWord digits = MakeDigits(m_row + 1);
    if (!digits.IsAt(at))
        return nullptr;
    at += digits.size;
    if (static_cast<std::size_t>(end - at) < m_tagEnd.size() ||
        std::memcmp(at, m_tagEnd.data(), m_tagEnd.size()) != 0)
        return nullptr;
    ++m_row;
    m_digits = digits;
    return at + m_tagEnd.size();
}

} // namespace NSTQ::Providers
