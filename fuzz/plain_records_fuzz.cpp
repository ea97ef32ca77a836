// Output with records that the reader copies as text is the same as output made of their fields, also if reads return
// few bytes or one of them fails.
#include "FuzzSupport.h"
#include "text/CopiedRecords.h"

namespace {

using namespace NSTQ;
using namespace NSTQ::Fuzz;
using namespace NSTQ::NSTQCore;

/// With limits that every record in memory is within; without them none is copied.
class CReader : public CCsvDataAccess {
public:
    CReader() : CCsvDataAccess(64000, 65535, 65535) {}

    void Read(Tests::CRecord& record) {
        const char** fields = nullptr;
        const WORD* lengths = nullptr;
        record.result = GetLineData(fields, lengths, record.count);
        record.failedRead = GetErrorCode() != 0;
        record.fields.clear();
        for (DWORD i = 0; fields != nullptr && i < record.count; ++i)
            record.fields.emplace_back(fields[i], lengths[i]);
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CFuzzInput input(data, size);
    Scan::EKernel chosen{};
    const bool keepsLineEnds = !input.Flag(chosen);
    const Tests::CKernel kernel(chosen);
    const char separator = input.Pick(separators);
    const SLineEnd lineEnd = input.Pick(lineEnds);
    const char formSeparator = input.Pick(separators);
    const SLineEnd formLineEnd = input.Pick(lineEnds);
    const Tests::SForm form{formSeparator, formLineEnd.pre, formLineEnd.post};
    const std::size_t readSize = input.Pick(readSizes), failing = input.Byte() % 8;
    const Tests::SCopying limits{.room = 64 + static_cast<DWORD>(input.Number() % 4096),
                                 .maxCount = input.Byte() + 1U};

    const CMemoryFile file(input.Rest());
    CSourceDataInfo info;
    info.SetCommonInfo(file.Path().c_str(), SCDeclareConstant::SFT_CSV);
    info.SetReadCharSet(CSourceDataInfo::RCS_ANSI);
    info.SetKeepLineEnds(keepsLineEnds);
    const auto write = [&](Tests::SCopying copying) {
        const CReadFaults faults(readSize, failing);
        CReader reader;
        reader.SetSeparator(separator);
        reader.SetDelimiter(lineEnd.pre, lineEnd.post);
        std::string output = reader.FileOpen(&info) ? Tests::WriteRecords(reader, form, copying) : "not opened";
        Require(copying.isWithin, "what is copied is within its limits");
        return output;
    };
    Require(write(limits) == write({}), "copied records are those that are made of fields");
    return 0;
}
