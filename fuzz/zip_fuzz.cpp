// Unpacking. The input is a zip archive.
#include "UnpackRun.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace NSTQ::Fuzz;
    const std::string_view archive(reinterpret_cast<const char*>(data), size);
    TTree plain, withPassword;
    const bool isPlain = Unpack(archive, "", plain);
    const bool isUnpacked = Unpack(archive, "secret", withPassword);
    Require(!isPlain || (isUnpacked && plain == withPassword), "a password that is not needed changes nothing");
    return 0;
}
