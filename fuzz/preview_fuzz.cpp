// The preview of fixed-length text.
#include "CSourceDataInfo.h"
#include "FuzzSupport.h"
#include "support/TempFolder.h"

#include <memory>

namespace {

using namespace NSTQ;
using namespace NSTQ::Fuzz;
using namespace NSTQ::NSTQCore;

constexpr std::size_t previewSize = 12288;
/// Sizes that shorter inputs are extended to, so that some go beyond the end of the preview.
constexpr std::array<std::size_t, 4> leastSizes = {0, previewSize - 1, previewSize, previewSize + 20};

struct SPreview {
    std::string text;
    bool hasLineEnd = false;
};

SPreview ExpectedPreview(std::string_view bytes, SLineEnd lineEnd) {
    const std::string_view area = bytes.substr(0, previewSize);
    const std::string_view mark(&lineEnd.pre, lineEnd.post == '\0' ? 1 : 2);
    SPreview preview;
    std::size_t end = 0;
    for (int row = 0; row < 3 && end != area.npos; ++row) {
        end = area.find(mark, end);
        preview.hasLineEnd |= end != area.npos;
        if (end != area.npos)
            end += mark.size();
    }
    preview.text = area.substr(0, end);
    preview.text.resize(std::min(preview.text.size(), preview.text.find('\0')));
    return preview;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Tests::CTempFolder folder;
    CFuzzInput input(data, size);
    const SLineEnd lineEnd = input.Pick(lineEnds);
    const std::size_t leastSize = input.Pick(leastSizes);
    const CAnsiPage page(input.Pick(codePages));
    std::string bytes(input.Rest());
    // Inserted at the beginning, so that the bytes of the input are at the end of the preview.
    if (bytes.size() < leastSize)
        bytes.insert(0, leastSize - bytes.size(), 'x');

    const std::string path = folder.WriteFile("rows.txt", bytes);
    CSourceDataInfo info;
    info.SetDelimiter(lineEnd.pre, lineEnd.post);
    Require(info.SetCommonInfo(path.c_str(), SCDeclareConstant::SFT_FIX), "the expected type is taken");
    Require(info.PrepareReadSourceData(false) == CSourceDataInfo::SDO_FIX_FILE, "the preview is read");

    const SPreview expected = ExpectedPreview(bytes, lineEnd);
    const char* text = nullptr;
    DWORD length = 0;
    Require(info.GetFixFileData(text, length), "there is a preview");
    Require(std::string_view(text, length) == expected.text && text[length] == '\0', "it ends after three rows");
    Require(info.GetIsExistFixCRLF() == expected.hasLineEnd, "it tells whether there are line ends");

    const std::unique_ptr<CSourceDataInfo> clone(info.CreateClone());
    Require(!clone->GetFixFileData(text, length), "a clone has no preview");
    Require(clone->GetIsExistFixCRLF() == expected.hasLineEnd, "a clone knows of the line ends");
    return 0;
}
