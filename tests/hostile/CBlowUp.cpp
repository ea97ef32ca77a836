#include "hostile/CBlowUp.h"

#include "support/LittleEndian.h"
#include "support/Repeat.h"

#include <algorithm>
#include <set>
#include <unordered_set>

namespace NSTQ::Tests {
namespace {

constexpr std::string_view digits = "0123456789";

/// Numbers that multiples of this one follow collide in a set of so many that hashes them to themselves.
std::uint64_t CollidingStep(std::size_t count) {
    std::unordered_set<std::uint64_t> set;
    for (std::uint64_t i = 0; i < count; ++i)
        set.insert(i);
    return set.bucket_count();
}

/// The piece with `number` replaced wherever it stands by itself.
std::string WithNumber(std::string_view piece, std::string_view number, std::uint64_t with) {
    std::string text;
    for (std::size_t at = 0; at < piece.size();) {
        const std::size_t run = std::min(piece.find_first_not_of(digits, at), piece.size()) - at;
        const std::size_t size = std::max<std::size_t>(run, 1);
        text += piece.substr(at, size) == number ? std::to_string(with) : piece.substr(at, size);
        at += size;
    }
    return text;
}

/// The places and sizes of the decimal numbers in a text.
std::vector<std::pair<std::size_t, std::size_t>> DigitRuns(std::string_view text) {
    std::vector<std::pair<std::size_t, std::size_t>> runs;
    for (std::size_t at = 0, end = 0; (at = text.find_first_of(digits, end)) != text.npos;) {
        end = std::min(text.find_first_not_of(digits, at), text.size());
        runs.emplace_back(at, end - at);
    }
    return runs;
}

} // namespace

void CBlowUp::Replace(std::string how, std::size_t at, std::size_t size, std::function<std::string()> text) {
    m_cases.push_back({m_title + ' ' + std::to_string(at) + ": " + std::move(how),
                       [part = m_part, wrap = m_wrap, at, size, text = std::move(text)] {
                           std::string changed = *part;
                           return (*wrap)(changed.replace(at, size, text()));
                       },
                       ""});
}

void CBlowUp::Fill(std::size_t at, std::size_t size) {
    for (const std::string_view filler : m_form.fillers)
        Replace("much of " + std::string(filler), at, size,
                [=, most = m_form.most] { return Repeat(filler, most / filler.size()); });
}

void CBlowUp::RepeatPart(std::size_t at, std::size_t size, std::size_t head) {
    const std::string piece = m_part->substr(at, size);
    const std::size_t count = m_form.most / size;
    for (const std::size_t most : std::set{m_form.most, m_form.mostRepeated})
        Replace("repeated to " + std::to_string(most), at, size, [=] { return Repeat(piece, most / piece.size()); });
    for (const auto& [first, length] : DigitRuns(piece.substr(0, head))) {
        const std::string number = piece.substr(first, length);
        for (const std::uint64_t step : {std::uint64_t{1}, CollidingStep(count), ~std::uint64_t{0}})
            Replace("repeated, counting " + number + " by " + std::to_string(step), at, size, [=] {
                const std::uint64_t from = step > count << 8 ? count : std::stoull(number);
                return Repeat([&](std::size_t i) { return WithNumber(piece, number, from + i * step); }, count);
            });
    }
}

void CBlowUp::Numbers(std::size_t at, std::size_t size) {
    constexpr std::pair<std::size_t, std::uint64_t> numbers[] = {{4, 0},       {4, ~0U},    {4, 0x7FFFFFFF},
                                                                 {4, 0xFFFFF}, {2, 0xFFFF}, {2, 0x7FFF}};
    for (const std::size_t end = at + size; at < end; ++at)
        for (const auto& [width, number] : numbers)
            if (at + width <= end && m_part->find_first_not_of((*m_part)[at], at) < at + width)
                Replace(std::to_string(number) + " in " + std::to_string(width) + " bytes", at, width,
                        [number = number, width = width] { return LittleEndian(number, width); });
}

void CBlowUp::Tag(std::size_t at, std::size_t size) {
    const std::string_view tag = std::string_view(*m_part).substr(at, size);
    for (std::size_t quote = 0; (quote = tag.find_first_of("'\"", quote)) != tag.npos;) {
        const std::size_t end = tag.find(tag[quote], quote + 1);
        Fill(at + quote + 1, end - quote - 1);
        quote = end + 1;
    }
    const std::size_t nameEnd = at + tag.find_first_of(" />", 1);
    Replace("many attributes", nameEnd, 0, [most = m_form.most] {
        return Repeat([](std::size_t i) { return " a" + std::to_string(i) + "=''"; }, most / 10);
    });
    Replace("blanks in the tag", nameEnd, 0, [most = m_form.most] { return std::string(most, ' '); });
    for (const std::string filler : {"<!---->", "<?a?>", " ", "<a/>"})
        Replace("preceded by many " + filler, at, 0,
                [=, most = m_form.most] { return Repeat(filler, most / filler.size()); });
}

void CBlowUp::Xml() {
    const std::string_view xml = *m_part;
    std::vector<std::pair<std::size_t, std::size_t>> open;
    std::set<std::string_view> known;
    const auto isNew = [&](std::size_t at, std::size_t end) { return known.insert(xml.substr(at, end - at)).second; };
    for (std::size_t at = 0; (at = xml.find('<', at)) != xml.npos;) {
        const std::size_t end = xml.find('>', at) + 1;
        if (xml[at + 1] == '/') {
            const auto [start, size] = open.back();
            open.pop_back();
            if (isNew(start, end)) {
                RepeatPart(start, end - start, size);
                Replace("nested", start, 0, [most = m_form.most, tag = xml.substr(start, size)] {
                    return Repeat(tag, most / tag.size());
                });
            }
        } else if (xml[at + 1] != '?') {
            const bool isEmpty = xml[end - 2] == '/';
            if (isNew(at, end)) {
                Tag(at, end - at);
                if (isEmpty)
                    RepeatPart(at, end - at, end - at);
            }
            if (!isEmpty)
                open.emplace_back(at, end - at);
        }
        at = std::min(xml.find('<', end), xml.size());
        if (at > end && isNew(end - 1, at + 1))
            Fill(end, at - end);
    }
    for (const auto& [at, size] : DigitRuns(xml))
        for (const char* number : {"0", "16384", "1048576", "4294967295", "99999999999999999999", "1e308"})
            Replace(number, at, size, [=] { return std::string(number); });
}

} // namespace NSTQ::Tests
