#include "ITextDecoder.h"

namespace NSTQ::Tool {

std::size_t ITextDecoder::DecodeBlock(std::string_view block, bool isLast, std::string& utf8) {
    utf8.resize(block.size() * 3);
    char* end = utf8.data();
    const std::size_t taken = Decode(block, isLast, end);
    utf8.resize(static_cast<std::size_t>(end - utf8.data()));
    return taken;
}

} // namespace NSTQ::Tool
