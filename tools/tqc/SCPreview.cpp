#include "SCPreview.h"

#include "CFailure.h"
#include "CReporter.h"
#include "CRowEncoder.h"
#include "CTextFile.h"
#include "SCSources.h"
#include "SCTerminal.h"
#include "tqcAccess/CodePage.h"
#include "tqcAccess/ErrorText.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tool {
namespace {

constexpr std::size_t rowsShown = 3;

/// With '.' for what SCTerminal::IsDisturbing tells of. `isAligned`: a character that is narrower than its bytes is
/// filled up with blanks, so that a ruler counts bytes.
void PrintVisibly(CRowEncoder& encoder, std::string_view text, bool isAligned) {
    while (!text.empty()) {
        const std::string_view character = CRowEncoder::FirstCharacter(text);
        const auto length = static_cast<WORD>(character.size());
        WCHAR units[4] = {};
        Platform::MultiByteToWideChar(Platform::CP_ACP, 0, character.data(), length, units, 4);
        const char* field = SCTerminal::IsDisturbing(units[0]) ? "." : character.data();
        WORD size = SCTerminal::IsDisturbing(units[0]) ? 1 : length;
        const char** fields = &field;
        const WORD* lengths = &size;
        encoder.Encode(fields, lengths, 1);
        std::fwrite(fields[0], 1, lengths[0], stdout);
        for (auto width = static_cast<std::size_t>(SCTerminal::WidthOf(units[0]));
             isAligned && width < character.size(); ++width)
            std::putchar(' ');
        text.remove_prefix(character.size());
    }
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

/// Whether fixed-length text is to be shown without knowing its widths.
bool NeedsRuler(const SOptions& options, const ISource& source) {
    const auto type = source.Type();
    const bool isFixed = type == SCDeclareConstant::SFT_FIX || type == SCDeclareConstant::SFT_UNKNOWN;
    return isFixed && options.widths.empty();
}

void ShowFixedLength(const SOptions& options, const CTextFile& text) {
    constexpr std::size_t widthShown = 1000;
    const std::string_view head = text.Body();
    const std::string lineEnd = text.LineEnd().Bytes();
    std::vector<std::string_view> rows;
    std::size_t width = 0;
    for (std::size_t start = 0; start < head.size() && rows.size() < rowsShown;) {
        const std::size_t end = std::min(head.find(lineEnd, start), head.size());
        rows.push_back(head.substr(start, std::min(end - start, widthShown)));
        width = std::max(width, rows.back().size());
        start = end + lineEnd.size();
    }
    CRowEncoder encoder(options.outputCodePage);
    PrintRuler(width);
    for (const std::string_view row : rows) {
        PrintVisibly(encoder, row, true);
        std::putchar('\n');
    }
}

void ShowFields(const SOptions& options, const std::string& name, ISourceReader& reader) {
    CRowEncoder encoder(options.outputCodePage);
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    const std::uint64_t skipped = reader.SkipLines(options.skip);
    for (std::size_t row = 0; row < rowsShown && reader.Rows().HasNextLineData(); ++row) {
        fields = nullptr;
        const bool complete = reader.Rows().GetLineData(fields, lengths, count);
        const std::string found = "row " + std::to_string(skipped + row + 1);
        if (const DWORD code = reader.Rows().GetErrorCode(); code != 0)
            throw CFailure(EExitStatus::Unsupported, name,
                           found + " cannot be read: " + Platform::GetErrorText(code));
        if (fields == nullptr)
            throw CFailure(EExitStatus::Limit, name,
                           found + " has " + std::to_string(options.maxLineSize) +
                               " bytes or more; convert can skip it");
        if (count == 0 && complete)
            return;
        count = std::min(count, options.maxFields);
        for (DWORD i = 0; i < count; ++i) {
            std::fputs(i == 0 ? "" : " | ", stdout);
            PrintVisibly(encoder, {fields[i], lengths[i]}, false);
        }
        std::putchar('\n');
    }
}

} // namespace

void SCPreview::Show(const SOptions& options, const CInputFile& input) {
    const auto source = SCSources::Open(options, input);
    const auto reader = NeedsRuler(options, *source) ? nullptr : source->OpenReader();
    const CTextFile* const text = source->Text();
    const auto doubts = text != nullptr && !options.quiet ? text->DescribeDoubts() : std::vector<std::string>();
    for (const std::string& doubt : doubts)
        CReporter::Print(input.Name() + ": " + doubt);
    if (reader)
        ShowFields(options, input.Name(), *reader);
    else if (text != nullptr)
        ShowFixedLength(options, *text);
}

} // namespace NSTQ::Tool
