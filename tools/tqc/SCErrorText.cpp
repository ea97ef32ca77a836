#include "SCErrorText.h"

#include <system_error>

namespace NSTQ::Tool {
namespace {

struct SErrorText {
    DWORD code;
    const char* text;
};

constexpr SErrorText errorTexts[] = {
    {2, "no such file"},
    {3, "no such folder"},
    {5, "access denied"},
    {6, "it is not open"},
    {19, "the file system is read-only"},
    {32, "another program is using it"},
    {38, "the file became shorter while it was read; try again"},
    {50, "not a regular file"},
    {SCErrorText::brokenPipe, "the reader closed the pipe"},
    {112, "no space left on the device"},
    {206, "the name is too long"},
    {1117, "the device failed"},
};

} // namespace

std::string SCErrorText::OfLibrary(DWORD code) {
    for (const SErrorText& entry : errorTexts)
        if (entry.code == code)
            return entry.text;
    return "system error " + std::to_string(code);
}

std::string SCErrorText::OfSystem(int error) {
    return std::generic_category().message(error);
}

} // namespace NSTQ::Tool
