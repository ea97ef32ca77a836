#include "SCPreview.h"

#include "CFailure.h"
#include "CRowEncoder.h"
#include "CSource.h"
#include "SCErrorText.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>
#include <string_view>

namespace NSTQ::Tool {
namespace {

constexpr int ROWS_SHOWN = 3;

/// Control bytes would move the columns or play with the terminal.
void PrintVisibly(std::string_view text) {
    for (const char c : text)
        std::putchar(static_cast<unsigned char>(c) < SCDataAccessDefine::SPACE_CODE ? '.' : c);
}

/// Encodes for the output; the widths of characters may change, the bytes that the ruler counts are the source's.
std::string Encode(CRowEncoder& encoder, std::string_view text) {
    if (encoder.IsIdle() || text.size() > LIMIT_MAX)
        return std::string(text);
    const char* field = text.data();
    const char** fields = &field;
    const auto length = static_cast<WORD>(text.size());
    const WORD* lengths = &length;
    encoder.Encode(fields, lengths, 1);
    return {fields[0], lengths[0]};
}

void PrintRuler(std::size_t width) {
    std::string tens;
    std::string units;
    for (std::size_t column = 1; column <= width; ++column) {
        units += static_cast<char>('0' + column % 10);
        if (column % 10 == 0) {
            const std::string number = std::to_string(column);
            tens.resize(std::max(tens.size(), column - number.size()), ' ');
            tens += number;
        }
    }
    if (!tens.empty())
        std::printf("%s\n", tens.c_str());
    std::printf("%s\n", units.c_str());
}

void ShowFixedLength(CSource& source) {
    constexpr std::size_t widthShown = 1000;
    const std::string preview = source.ReadPreview();
    const char ends[] = {source.LineEnd().cPre, source.LineEnd().cPost};
    const std::string_view lineEnd(ends, source.LineEnd().cPost == 0 ? 1 : 2);
    std::vector<std::string_view> rows;
    std::size_t width = 0;
    for (std::size_t start = 0; start < preview.size();) {
        const std::size_t end = std::min(preview.find(lineEnd, start), preview.size());
        rows.push_back(std::string_view(preview).substr(start, std::min(end - start, widthShown)));
        width = std::max(width, rows.back().size());
        start = end + lineEnd.size();
    }
    CRowEncoder encoder(source.OutputCodePage());
    PrintRuler(width);
    for (const std::string_view row : rows) {
        PrintVisibly(Encode(encoder, row));
        std::putchar('\n');
    }
}

void ShowFields(const SOptions& options, CSource& source) {
    const auto reader = source.OpenReader();
    CRowEncoder encoder(source.OutputCodePage());
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    for (int row = 0; row < ROWS_SHOWN && reader->Rows().HasNextLineData(); ++row) {
        if (!reader->Rows().GetLineData(fields, lengths, count))
            throw CFailure(ES_UNSUPPORTED, options.strFile, "its row " + std::to_string(row + 1) + " cannot be read");
        if (count == 0)
            return;
        count = std::min(count, options.dwMaxFields);
        if (!encoder.IsIdle())
            encoder.Encode(fields, lengths, count);
        for (DWORD i = 0; i < count; ++i) {
            std::fputs(i == 0 ? "" : " | ", stdout);
            PrintVisibly({fields[i], lengths[i]});
        }
        std::putchar('\n');
    }
}

} // namespace

void SCPreview::Show(const SOptions& options) {
    CSource source(options);
    if (source.Type() == SCDeclareConstant::SFT_FIX)
        ShowFixedLength(source);
    else
        ShowFields(options, source);
    if (std::fflush(stdout) != 0 && errno != EPIPE)
        throw CFailure(ES_OUTPUT_FAILED, "standard output", SCErrorText::OfSystem(errno));
}

} // namespace NSTQ::Tool
