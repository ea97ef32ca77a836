#include "tqcAccess/CodePage.h"

#include "platform/codepage/AsciiCase.h"
#include "platform/codepage/CodePageTables.h"
#include "platform/codepage/Utf8.h"
#include "platform/errors/LastError.h"

#include <atomic>
#include <cstring>

namespace NSTQ::Platform {

namespace {

constinit const CCodePageTables codePageUtf8 = {
    CP_UTF8, static_cast<char16_t>(replacementCharacter), 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr};

constinit std::atomic<const CCodePageTables*> ansiTables{&codePage932};

/// Null in a thread without pages of its own.
constinit thread_local const CCodePageTables* threadTables = nullptr;
constinit thread_local const CCodePageTables* threadPathTables = nullptr;

const CCodePageTables& ChooseTables(const CCodePageTables* own) {
    return own != nullptr ? *own : *ansiTables.load(std::memory_order_acquire);
}

unsigned GetNumber(const CCodePageTables* tables) {
    return tables == nullptr ? 0 : tables->m_codePage;
}

/// A page of a thread before; null for 0.
const CCodePageTables* FindOwnTables(unsigned codePage) {
    return codePage == 0 ? nullptr : FindTables(codePage);
}

/// The difference between the lower and the upper case of a Latin letter, ASCII or full-width.
constexpr unsigned caseDistance = 0x20;
constexpr char16_t fullWidthA = 0xFF21;
constexpr char16_t fullWidthZ = 0xFF3A;
/// The same letters in UTF-8: EF BC A1 to EF BC BA, and EF BD 81 for the first small one.
constexpr unsigned utf8FullWidthA = 0xEFBCA1;
constexpr unsigned utf8FullWidthZ = 0xEFBCBA;
constexpr unsigned utf8SmallFullWidthA = 0xEFBD81;

/// Whether the byte at `position` of a double-byte text begins a pair. A character always
/// begins after a byte that is not a lead byte, so only the lead bytes directly before `position` count, paired from
/// the left.
bool BeginsPair(const CCodePageTables& page, const unsigned char* start, const unsigned char* position) {
    if (!page.IsLead(*position))
        return false;
    const unsigned char* run = position;
    while (run != start && page.IsLead(run[-1]))
        --run;
    return (position - run) % 2 == 0;
}

/// Reads the value of the next character and advances `text`. A lead byte before the NUL counts as the end, as on
/// Windows.
unsigned TakeCharacter(const CCodePageTables& page, const unsigned char*& text) {
    const unsigned first = *text++;
    if (!page.IsLead(static_cast<unsigned char>(first)))
        return first;
    return *text == 0 ? 0 : first << 8 | *text++;
}

} // namespace

const CCodePageTables& GetAnsiTables() {
    return ChooseTables(threadTables);
}

CPathCodePage::CPathCodePage() : m_before(threadTables) {
    threadTables = threadPathTables;
}

CPathCodePage::~CPathCodePage() {
    threadTables = m_before;
}

CThreadCodePage::CThreadCodePage(unsigned codePage, unsigned pathCodePage)
    : m_codePageBefore(GetNumber(threadTables)), m_pathCodePageBefore(GetNumber(threadPathTables)) {
    const CCodePageTables* const page = FindTables(codePage);
    const CCodePageTables* const pathPage = pathCodePage == CP_ACP ? nullptr : FindTables(pathCodePage);
    threadPathTables = pathPage == nullptr ? &ChooseTables(threadPathTables) : pathPage;
    threadTables = page == nullptr ? &GetAnsiTables() : page;
}

CThreadCodePage::~CThreadCodePage() {
    threadTables = FindOwnTables(m_codePageBefore);
    threadPathTables = FindOwnTables(m_pathCodePageBefore);
}

const CCodePageTables* FindTables(unsigned codePage) {
    switch (codePage) {
    case CP_ACP:
        return &GetAnsiTables();
    case 932:
        return &codePage932;
    case 936:
        return &codePage936;
    case 949:
        return &codePage949;
    case 950:
        return &codePage950;
    case 1252:
        return &codePage1252;
    case CP_UTF8:
        return &codePageUtf8;
    default:
        return nullptr;
    }
}

void SetAnsiCodePage(unsigned codePage) {
    const CCodePageTables* const page = FindTables(codePage);
    if (page == nullptr)
        SetLastError(ERROR_INVALID_PARAMETER);
    else
        ansiTables.store(page, std::memory_order_release);
}

unsigned GetAnsiCodePage() {
    return GetAnsiTables().m_codePage;
}

bool IsCodePageSupported(unsigned codePage) {
    return FindTables(codePage) != nullptr;
}

int _ismbslead(const unsigned char* start, const unsigned char* position) {
    const CCodePageTables& page = GetAnsiTables();
    if (position < start || std::memchr(start, 0, static_cast<std::size_t>(position - start)) != nullptr)
        return 0;
    const bool isLead = page.IsUtf8()         ? GetUtf8Length(*position) > 1
                        : page.IsDoubleByte() ? BeginsPair(page, start, position)
                                              : false;
    return isLead ? -1 : 0;
}

unsigned _mbctolower(unsigned character) {
    if (character < 0x80)
        return ToAsciiLower(character);
    const CCodePageTables& page = GetAnsiTables();
    if (page.IsUtf8()) {
        const bool isCapital = character >= utf8FullWidthA && character <= utf8FullWidthZ;
        return isCapital ? character - utf8FullWidthA + utf8SmallFullWidthA : character;
    }
    const unsigned lead = character >> 8;
    if (!page.IsDoubleByte() || lead > 0xFF || !page.IsLead(static_cast<unsigned char>(lead)))
        return character;
    const char16_t unit =
        page.DecodePair(static_cast<unsigned char>(lead), static_cast<unsigned char>(character & 0xFF));
    const bool isCapital = unit >= fullWidthA && unit <= fullWidthZ;
    return isCapital ? page.Encode(static_cast<char16_t>(unit + caseDistance)) : character;
}

int _mbscmp(const unsigned char* left, const unsigned char* right) {
    const CCodePageTables& page = GetAnsiTables();
    // The order of UTF-8 bytes is that of the characters.
    if (!page.IsDoubleByte())
        return std::strcmp(reinterpret_cast<const char*>(left), reinterpret_cast<const char*>(right));
    for (;;) {
        const unsigned leftCharacter = TakeCharacter(page, left);
        const unsigned rightCharacter = TakeCharacter(page, right);
        if (leftCharacter != rightCharacter)
            return leftCharacter < rightCharacter ? -1 : 1;
        if (leftCharacter == 0)
            return 0;
    }
}

std::size_t KeptTextLength(const char* text, std::size_t length, std::size_t limit) {
    if (length <= limit)
        return length;
    const CCodePageTables& page = GetAnsiTables();
    const auto* const start = reinterpret_cast<const unsigned char*>(text);
    if (limit == 0)
        return 0;
    if (page.IsDoubleByte())
        return BeginsPair(page, start, start + limit - 1) ? limit - 1 : limit;
    if (!page.IsUtf8())
        return limit;
    // An incomplete sequence has at most three bytes.
    for (std::size_t back = 1; back <= 3 && back <= limit; ++back) {
        const unsigned char byte = start[limit - back];
        if (!IsUtf8Trail(byte))
            return GetUtf8Length(byte) > back ? limit - back : limit;
    }
    return limit;
}

} // namespace NSTQ::Platform
