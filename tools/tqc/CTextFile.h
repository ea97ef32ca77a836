// A text file: what is detected by its beginning, and its readers.
#pragma once

#include "CFileHead.h"
#include "CSourceReader.h"
#include "SOptions.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tool {

class CTextFile {
public:
    /// Where the text is read from.
    struct SPlace {
        std::string name; ///< its name in messages
        std::string path;
        int stream;                            ///< the number of one that is read once; negative for a file
        std::optional<STextEncoding> original; ///< the encoding, if this is a copy in UTF-8
        bool hasBom = false;                   ///< of the original
    };
    /// A character set: its name ("utf-8"), or none if it is unknown, and whether there is a BOM.
    struct SCharacterSet {
        std::string name;
        bool hasBom;
    };

    /// The options must outlive it.
    CTextFile(const SOptions& options, SPlace place, CFileHead head);

    const std::string& Path() const { return m_place.path; }
    LONGLONG Size() const { return m_head.Size(); }
    /// The first bytes, without the BOM.
    std::string_view Head() const;
    /// Those after the lines that the options leave out before the header row; all if they end beyond the first
    /// bytes.
    std::string_view Body() const;
    const SLineEnd& LineEnd() const { return m_lineEnd; }

    /// That of the options, else the one that was set or found, at first a comma; 0 if it is unknown.
    char Separator() const { return m_options.separator.value_or(m_separator); }
    void SetSeparator(char separator) { m_separator = separator; }
    /// Replaces the separator by one that separates the fields of the first rows clearly better. False if there is
    /// none afterwards.
    bool FindSeparator();

    /// The one in which a file that begins like this is read.
    static unsigned CodePageOf(const SOptions& options, std::string_view head);
    unsigned CodePage() const { return m_codePage; }
    SCharacterSet CharacterSet() const;
    /// The same in words.
    std::string DescribeCharacterSet() const;
    /// What was detected but is not certain, for messages: the probable encoding of text that is read as UTF-8 by
    /// default, but has invalid bytes at the beginning; a separator when another one is as good.
    std::vector<std::string> DescribeDoubts() const;

    // The text must outlive the readers; `info` describes the file and takes what the options and the text tell. Both
    // throw CFailure.
    std::unique_ptr<ISourceReader> OpenDelimited(CSourceDataInfo& info) const;
    std::unique_ptr<ISourceReader> OpenFixedLength(CSourceDataInfo& info) const;

private:
    std::string DescribeInvalidText() const;
    std::string OriginalEncoding() const;
    bool IsConverted() const { return m_place.original.has_value(); }
    CSourceDataInfo::EReadCharSet CharSet() const;
    bool IsStream() const { return m_place.stream >= 0; }
    void OpenFile(NSTQCore::VCTextFileOperater& reader, CSourceDataInfo& info) const;

    const SOptions& m_options;
    SPlace m_place;
    CFileHead m_head;
    char m_separator = SCDataAccessDefine::CAMMA_CODE;
    SLineEnd m_lineEnd;
    unsigned m_codePage;
    char m_otherSeparator = 0; ///< one that may be meant instead
};

} // namespace NSTQ::Tool
