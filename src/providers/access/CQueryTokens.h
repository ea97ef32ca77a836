// The tokens of an expression in a saved query.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NSTQ::Providers {

enum class ETokenKind {
    End,
    Name, ///< in brackets, or a word that is no keyword
    Keyword,
    Sign, ///< a bracket, a comparison, a dot, a star, a minus
    Text,
    Number,
    Date,
    Other ///< any other token
};

struct SToken {
    ETokenKind kind = ETokenKind::End;
    std::u16string text; ///< of a keyword or sign itself (keywords in capitals), of others the contents
    double number = 0;   ///< of a date the number of seconds since day 0
};

class CQueryTokens {
public:
    /// `text` outlives the object.
    explicit CQueryTokens(std::u16string_view text) : m_rest(text) { Advance(); }

    const SToken& Current() const { return m_current; }
    void Advance();
    /// Skips the next token if it is this keyword or sign.
    bool Take(std::u16string_view word);

private:
    void TakeBracketed();
    void TakeQuoted(char16_t quote);
    void TakeDate();
    void TakeNumber();
    void TakeWord();
    void TakeSign();

    std::u16string_view m_rest;
    SToken m_current;
};

/// The seconds since day 0 of a date of the database, in chronological order.
double SecondsOfDate(double date);

} // namespace NSTQ::Providers
