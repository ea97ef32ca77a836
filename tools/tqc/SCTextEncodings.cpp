#include "SCTextEncodings.h"

#include "AsciiCase.h"
#include "CEucJpDecoder.h"
#include "CSingleByteDecoder.h"
#include "CUtf16Decoder.h"
#include "SCDataAccessDefine.h"
#include "SCTextProbe.h"

#include <array>
#include <charconv>

namespace NSTQ::Tool {
namespace {

using EForm = STextEncoding::EForm;

constexpr unsigned isoBase = 28590; ///< with the number of the part the number of the page

struct SAlias {
    std::string_view name;
    STextEncoding encoding;
};
/// Without '-' and '_', in small letters.
constexpr SAlias aliases[] = {
    {"utf16", {EForm::Utf16}},  {"utf16le", {EForm::Utf16Le}},
    {"1200", {EForm::Utf16Le}}, {"utf16be", {EForm::Utf16Be}},
    {"1201", {EForm::Utf16Be}}, {"eucjp", {EForm::EucJp}},
    {"ujis", {EForm::EucJp}},   {"51932", {EForm::EucJp}},
    {"20932", {EForm::EucJp}},  {"tis620", {EForm::SingleBytes, isoBase + 11}},
};
/// The parts of ISO 8859 that are called Latin, by that number.
constexpr unsigned latinParts[] = {0, 1, 2, 3, 4, 9, 10, 13, 14, 15, 16};

std::string Simplify(std::string_view name) {
    std::string simple = ToAsciiLowerText(std::string(name));
    std::erase_if(simple, [](char c) { return c == '-' || c == '_'; });
    return simple;
}

/// The number after a prefix; 0 if that is all or something else.
unsigned NumberAfter(std::string_view prefix, std::string_view name) {
    unsigned number = 0;
    if (!name.starts_with(prefix))
        return 0;
    const char* const end = name.data() + name.size();
    const auto [stop, error] = std::from_chars(name.data() + prefix.size(), end, number);
    return error == std::errc{} && stop == end ? number : 0;
}

bool IsSingleBytePage(unsigned codePage) {
    const bool isPart = codePage > isoBase && codePage <= isoBase + 16 && codePage != isoBase + 12;
    return codePage == 874 || (codePage >= 1250 && codePage <= 1258) || isPart;
}

/// The page of a name in its simple form; 0 for an unknown one.
unsigned FindPage(std::string_view name) {
    for (const std::string_view prefix : {"", "cp", "windows"})
        if (const unsigned page = NumberAfter(prefix, name); IsSingleBytePage(page))
            return page;
    if (const unsigned part = NumberAfter("iso8859", name); part > 0 && IsSingleBytePage(isoBase + part))
        return isoBase + part;
    const unsigned latin = NumberAfter("latin", name);
    return latin > 0 && latin < std::size(latinParts) ? isoBase + latinParts[latin] : 0;
}

} // namespace

std::optional<STextEncoding> SCTextEncodings::Find(std::string_view name) {
    const std::string simple = Simplify(name);
    for (const SAlias& alias : aliases)
        if (alias.name == simple)
            return alias.encoding;
    if (const unsigned page = FindPage(simple); page != 0)
        return STextEncoding{EForm::SingleBytes, page};
    return std::nullopt;
}

std::optional<STextEncoding> SCTextEncodings::FindByBom(std::string_view head) {
    if (!NSTQCore::SCTextProbe::HasUtf16Bom(head))
        return std::nullopt;
    return STextEncoding{head[0] == '\xFF' ? EForm::Utf16Le : EForm::Utf16Be};
}

std::optional<STextEncoding> SCTextEncodings::FindByNuls(std::string_view head) {
    std::array<std::size_t, 2> nuls{};
    for (std::size_t i = 0; i < head.size(); ++i)
        nuls[i % 2] += head[i] == '\0' ? 1 : 0;
    const std::size_t few = head.size() / 100;
    const std::size_t many = head.size() / 4;
    if (nuls[0] <= few && nuls[1] >= many && nuls[1] > 0)
        return STextEncoding{EForm::Utf16Le};
    if (nuls[1] <= few && nuls[0] >= many && nuls[0] > 0)
        return STextEncoding{EForm::Utf16Be};
    return std::nullopt;
}

std::optional<STextEncoding> SCTextEncodings::Choose(const std::optional<STextEncoding>& given,
                                                     std::string_view head) {
    if (const auto told = FindByBom(head))
        return told;
    if (given && given->form == EForm::Utf16)
        return FindByNuls(head).value_or(STextEncoding{EForm::Utf16Le});
    return given;
}

std::string SCTextEncodings::NameOf(const STextEncoding& encoding) {
    switch (encoding.form) {
    case EForm::Utf16:
        return "utf-16";
    case EForm::Utf16Le:
        return "utf-16le";
    case EForm::Utf16Be:
        return "utf-16be";
    case EForm::EucJp:
        return "euc-jp";
    case EForm::SingleBytes:
        break;
    }
    const unsigned page = encoding.codePage;
    return page > isoBase ? "iso-8859-" + std::to_string(page - isoBase) : "windows-" + std::to_string(page);
}

std::unique_ptr<ITextDecoder> SCTextEncodings::MakeDecoder(const STextEncoding& encoding, const std::string& file) {
    switch (encoding.form) {
    case EForm::Utf16:
    case EForm::Utf16Le:
    case EForm::Utf16Be:
        return std::make_unique<CUtf16Decoder>(encoding.form == EForm::Utf16Be);
    case EForm::EucJp:
        return std::make_unique<CEucJpDecoder>();
    case EForm::SingleBytes:
        break;
    }
    return std::make_unique<CSingleByteDecoder>(encoding.codePage, NameOf(encoding), file);
}

} // namespace NSTQ::Tool
