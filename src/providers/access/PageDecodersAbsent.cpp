// Stands in for the decoders when the build has left encryption out.
#include "providers/access/IPageDecoder.h"

#include "providers/common/CSourceError.h"

namespace NSTQ::Providers {

std::unique_ptr<IPageDecoder> MakePageDecoder(const CHeaderPage&, std::span<const unsigned char>,
                                              const std::string&) {
    throw CSourceError("encrypted, and this build opens no encrypted files");
}

} // namespace NSTQ::Providers
