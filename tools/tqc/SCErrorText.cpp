#include "SCErrorText.h"

namespace NSTQ::Tool {
namespace {

struct SErrorText {
    DWORD code;
    const char* text;
};

constexpr SErrorText errorTexts[] = {
    {2, "no such file"},
    {3, "no such folder"},
    {4, "too many open files"},
    {5, "access denied"},
    {6, "it is not open"},
    {8, "not enough memory"},
    {19, "the file system is read-only"},
    {32, "another program is using it"},
    {33, "another program has locked it"},
    {38, "the file became shorter while it was read; try again"},
    {50, "not a regular file"},
    {SCErrorText::fileExists, "it exists already"},
    {SCErrorText::brokenPipe, "the reader closed the pipe"},
    {111, "the name is too long"},
    {112, "no space left on the device"},
    {123, "the name is invalid"},
    {206, "the name is too long"},
    {1117, "the device failed"},
};

} // namespace

std::string SCErrorText::Of(DWORD code) {
    for (const SErrorText& entry : errorTexts)
        if (entry.code == code)
            return entry.text;
    return "system error " + std::to_string(code);
}

} // namespace NSTQ::Tool
