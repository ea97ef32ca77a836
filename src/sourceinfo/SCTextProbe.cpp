#include "SCTextProbe.h"

#include "tqcAccess/CodePage.h"

namespace NSTQ::NSTQCore {
namespace {

constexpr char cr = SCDataAccessDefine::CR_CODE;
constexpr char lf = SCDataAccessDefine::LF_CODE;

template <std::size_t size>
std::string_view View(const unsigned char (&mark)[size]) {
    return {reinterpret_cast<const char*>(mark), size};
}

/// The first LF outside quotes. A quote opens a quoted part only where a field begins; a doubled one opens it anew.
std::size_t FindUnquotedLineFeed(std::string_view head, char separator) {
    constexpr std::string_view starters = ",\t \r\n\"";
    bool quoted = false;
    bool atStart = true;
    for (std::size_t i = SCTextProbe::HasUtf8Bom(head) ? 3 : 0; i < head.size(); ++i) {
        const char c = head[i];
        if (c == lf && !quoted)
            return i;
        if (c == SCDataAccessDefine::DOUBLE_QUOTATION)
            quoted = !quoted && atStart;
        atStart = c == separator || starters.find(c) != std::string_view::npos;
    }
    return std::string_view::npos;
}

std::string_view FirstLine(std::string_view head, const SLineEnd& lineEnd) {
    return head.substr(0, head.find(lineEnd.Bytes()));
}

} // namespace

SLineEnd SCTextProbe::FindLineEnd(std::string_view head, char separator) {
    std::size_t lineFeed = FindUnquotedLineFeed(head, separator);
    if (lineFeed == std::string_view::npos)
        lineFeed = head.find(lf);
    if (lineFeed != std::string_view::npos)
        return lineFeed > 0 && head[lineFeed - 1] == cr ? SLineEnd{cr, lf} : SLineEnd{lf, 0};
    // By LF alone CR LF is read as well, since the readers drop a CR that ends nothing.
    return head.find(cr) != std::string_view::npos ? SLineEnd{cr, 0} : SLineEnd{lf, 0};
}

bool SCTextProbe::HasLineEnd(std::string_view head, const SLineEnd& lineEnd) {
    return FirstLine(head, lineEnd).size() < head.size();
}

SCDeclareConstant::ESourceFileType SCTextProbe::FindType(std::string_view head, const SLineEnd& lineEnd) {
    const std::string_view line = FirstLine(head, lineEnd);
    if (line.find(SCDataAccessDefine::TAB_CODE) != std::string_view::npos)
        return SCDeclareConstant::SFT_TXT;
    if (line.find(SCDataAccessDefine::CAMMA_CODE) != std::string_view::npos)
        return SCDeclareConstant::SFT_CSV;
    return SCDeclareConstant::SFT_UNKNOWN;
}

bool SCTextProbe::HasUtf8Bom(std::string_view head) {
    return head.starts_with(View(SCDataAccessDefine::BOM_UTF8));
}

bool SCTextProbe::HasUtf16Bom(std::string_view head) {
    return head.starts_with(View(SCDataAccessDefine::BOM_UTF16LE)) ||
           head.starts_with(View(SCDataAccessDefine::BOM_UTF16BE));
}

std::string_view SCTextProbe::WholeLines(std::string_view head) {
    std::size_t end = head.find_last_of("\r\n");
    if (end == std::string_view::npos && head.size() == SCDataAccessDefine::READ_BUFF_SIZE)
        end = Platform::KeptTextLength(head.data(), head.size(), head.size() - 1);
    return head.substr(0, end);
}

bool SCTextProbe::IsUtf8(std::string_view head) {
    const std::string_view lines = WholeLines(head);
    return Platform::CountValidUtf8(lines.data(), lines.size()) == lines.size();
}

} // namespace NSTQ::NSTQCore
