// Makes each count, length and repetition of a valid file large, one at a time.
//
//     CBlowUp part(cases, "sheet", xml, [](std::string changed) { return MakeZip({{"sheet1.xml", changed}}); });
//     part.Xml();
#pragma once

#include "hostile/Hostile.h"

#include <memory>
#include <string_view>

namespace NSTQ::Tests {

struct SBlowUpForm {
    std::vector<std::string_view> fillers = {}; ///< what a text is filled with
    std::size_t most = 4'000'000;               ///< bytes that anything grows to
    std::size_t mostRepeated = most;            ///< a second size of what is repeated
};

class CBlowUp {
public:
    using TWrap = std::function<std::string(std::string part)>;

    /// Adds its cases to `cases`; `wrap` makes a file of the changed part.
    CBlowUp(std::vector<SHostileCase>& cases, std::string title, std::string part, TWrap wrap, SBlowUpForm form = {})
        : m_cases(cases), m_title(std::move(title)), m_part(std::make_shared<std::string>(std::move(part))),
          m_wrap(std::make_shared<TWrap>(std::move(wrap))), m_form(std::move(form)) {}

    /// The bytes from `at` on become those that `text` returns.
    void Replace(std::string how, std::size_t at, std::size_t size, std::function<std::string()> text);
    /// The bytes from `at` on become very many: of blanks, digits, separators, ...
    void Fill(std::size_t at, std::size_t size);
    /// A piece is repeated very often, also with each number in its first `head` bytes counting up.
    void RepeatPart(std::size_t at, std::size_t size, std::size_t head = 0);
    /// Little-endian numbers of 2 and 4 bytes, in each place of a range where not all bytes are the same.
    void Numbers(std::size_t at, std::size_t size);
    /// All elements, attributes, texts and decimal numbers of an XML part.
    void Xml();

private:
    void Tag(std::size_t at, std::size_t size);

    std::vector<SHostileCase>& m_cases;
    std::string m_title;
    std::shared_ptr<const std::string> m_part;
    std::shared_ptr<const TWrap> m_wrap;
    SBlowUpForm m_form;
};

} // namespace NSTQ::Tests
