// The detection of the type of a file by its name and its first line.
#include "CSourceDataInfo.h"
#include "FuzzSupport.h"
#include "support/TempFolder.h"

#include <algorithm>
#include <cstring>

namespace {

using namespace NSTQ;
using namespace NSTQ::Fuzz;
using namespace NSTQ::NSTQCore;
using enum SCDeclareConstant::ESourceFileType;
using TType = SCDeclareConstant::ESourceFileType;

struct SName {
    const char* name;
    TType type; ///< SFT_UNKNOWN: the content decides
};
constexpr std::array names = {
    SName{"a.txt", SFT_UNKNOWN},   SName{"a.dat", SFT_UNKNOWN}, SName{"a.d", SFT_UNKNOWN},
    SName{"a.", SFT_UNKNOWN},      SName{"a.CSV", SFT_CSV},     SName{"a.xLs", SFT_XLS},
    SName{"a.mdb", SFT_MDB},       SName{"a.xlsx", SFT_XLSX},   SName{"a.xtqf", SFT_XTQF},
    SName{"a.accdb", SFT_ACCDB},   SName{"a.TXT", SFT_UNKNOWN}, SName{"a.csvx", SFT_UNKNOWN},
    SName{"a.accdbx", SFT_UNKNOWN}};
constexpr std::array types = {SFT_UNKNOWN, SFT_XTQF, SFT_CSV, SFT_TXT, SFT_FIX, SFT_XLS, SFT_ACCDB};
constexpr std::array<DWORD, 6> scanLimits = {4096, 0, 1, 10, 64, 70000};

TType ExpectedOfContent(std::string_view bytes, DWORD scanLimit) {
    const std::size_t end = bytes.substr(0, 64000).find("\r\n");
    if (end == bytes.npos || end >= scanLimit)
        return SFT_UNKNOWN;
    const std::string_view line = bytes.substr(0, end);
    return line.find('\t') != line.npos ? SFT_TXT : line.find(',') != line.npos ? SFT_CSV : SFT_FIX;
}

TType Expected(const SName& name, TType expectation, std::string_view bytes, DWORD scanLimit) {
    if (name.type != SFT_UNKNOWN)
        return name.type;
    const bool isTxt = std::strcmp(name.name, "a.txt") == 0 || std::strcmp(name.name, "a.TXT") == 0;
    if (isTxt && (expectation == SFT_TXT || expectation == SFT_FIX))
        return expectation;
    const TType sniffed = ExpectedOfContent(bytes, scanLimit);
    return isTxt && sniffed == SFT_UNKNOWN ? SFT_FIX : sniffed;
}

TType TypeOf(const CSourceDataInfo& info) {
    TType type = SFT_UNKNOWN;
    Require(info.GetSourceFileType(type) == (type != SFT_UNKNOWN), "a type is given when there is one");
    return type;
}

/// Uses the input as the path; no such file exists.
void CheckPath(std::string path, TType expectation, DWORD scanLimit) {
    path.resize(std::min(path.size(), path.find('\0')));
    CSourceDataInfo info(256, scanLimit);
    const bool isKnown = info.SetCommonInfo(path.c_str(), expectation);
    Require(isKnown == (TypeOf(info) != SFT_UNKNOWN), "the result tells whether there is a type");
    const char* kept = nullptr;
    const bool isLong = path.size() > 260;
    Require(!isLong || !isKnown, "a long path is refused");
    if (TypeOf(info) != SFT_XTQF && info.GetFilePath(kept))
        Require(!isLong && kept == path, "the path is kept");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Tests::CTempFolder folder;
    CFuzzInput input(data, size);
    const SName name = input.Pick(names);
    const TType expectation = input.Pick(types);
    const DWORD scanLimit = input.Pick(scanLimits);
    const CAnsiPage page(input.Pick(codePages));
    const std::string_view bytes = input.Rest();

    const std::string path = folder.WriteFile(name.name, bytes);
    CSourceDataInfo info(256, scanLimit);
    const TType expected = Expected(name, expectation, bytes, scanLimit);
    const bool isKnown = info.SetCommonInfo(path.c_str(), expectation);
    std::filesystem::remove(path);
    Require(TypeOf(info) == expected, "name and first line give the type");
    Require(isKnown == (expected != SFT_UNKNOWN), "the result tells whether there is a type");
    CheckPath(folder.Path("x") + std::string(bytes), expectation, scanLimit);
    return 0;
}
