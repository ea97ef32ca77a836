// Output made of fields, and the same with the records that the reader copies as text.
#pragma once

#include "CCsvDataAccess.h"
#include "text/ReferenceReader.h"

#include <string>

namespace NSTQ::Tests {

using SForm = NSTQCore::CCsvDataAccess::SForm;

inline void AppendFields(std::string& output, const CRecord& record, const SForm& form) {
    for (const std::string& field : record.fields) {
        output.append(&field == record.fields.data() ? 0 : 1, form.cSeparator);
        const bool isQuoted = field.find_first_of(std::string{'"', '\r', '\n', form.cSeparator}) != field.npos;
        output.append(isQuoted ? 1 : 0, '"');
        for (const char c : field)
            output.append(c == '"' ? 2 : 1, c);
        output.append(isQuoted ? 1 : 0, '"');
    }
    output += form.cPreDelimiter;
    output.append(form.cPostDelimiter == 0 ? 0 : 1, form.cPostDelimiter);
}

struct SCopying {
    DWORD room = 0; ///< for records that are copied; 0 for none
    DWORD maxCount = 1;
    std::size_t copied = 0; ///< afterwards how many records were, added up
    bool isWithin = true;   ///< and whether none was beyond these limits
};

/// All records as text, with a note for each that is not complete, and their number. `TReader` has Read(CRecord&).
template <class TReader>
std::string WriteRecords(TReader& reader, const SForm& form, SCopying& copying) {
    std::string output, text(copying.room, '\0');
    std::size_t records = 0;
    for (CRecord record; reader.HasNextLineData();) {
        DWORD size = copying.room;
        const DWORD count = reader.CopyPlainRecords(form, copying.maxCount, text.data(), size);
        copying.isWithin = copying.isWithin && count <= copying.maxCount && size <= copying.room;
        copying.copied += count;
        records += count;
        output.append(text, 0, size);
        if (count > 0)
            continue;
        reader.Read(record);
        AppendFields(output, record, form);
        output += record.result ? "" : record.failedRead ? "<failed read>" : "<cut>";
        ++records;
    }
    return output + std::to_string(records);
}

} // namespace NSTQ::Tests
