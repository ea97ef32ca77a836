// VCTextFileOperater: buffered sequential reading, the base of the text readers.
//
// It opens the file of a description, reads it in fills of 64000 bytes, recognises the UTF-8 BOM and line ends,
// rewinds, skips to a line, and owns the memory for the fields of a record. All memory is allocated in the
// constructor; reading allocates nothing. The reader owns its buffers and its file; one thread at a time.
//
// Line ends: the pre-delimiter followed by the post-delimiter, or the pre-delimiter alone when the post-delimiter is
// 0. A pre-delimiter without its post-delimiter is no line end. A delimiter of 0x80 or above never matches.
//
// FileOpen on an open reader closes the earlier file; MoveFileEnd leaves the reader at the
// end: HasNextLineData is false, GetReadPosition 1000 (0 for an empty file), and a record read finds no data.
#pragma once

#include "CSourceDataInfo.h"
#include "IDataAccess.h"
#include "tqcAccess/CodePage.h"

#include <cstddef>
#include <limits>
#include <memory>

namespace NSTQ::NSTQCore {

class TQCACCESS_API VCTextFileOperater : public IDataAccess {
public:
    VCTextFileOperater(const VCTextFileOperater&) = delete;
    VCTextFileOperater& operator=(const VCTextFileOperater&) = delete;

    /// The error code of FileOpen when the description has no path.
    static const DWORD DW_ERROR_PATH_NOT_FOUND = 3;

    /// Opens the description's file (for a package its unpacked data file), takes its size and reads the first fill.
    /// With RCS_AUTO the file determines the character set: RCS_UTF8 if it begins with a BOM, which is skipped, else
    /// RCS_ANSI; a file of fewer than 4 bytes keeps RCS_AUTO. With RCS_UTF8 a BOM is skipped.
    /// Failure: false with the system's error code, or DW_ERROR_PATH_NOT_FOUND.
    bool FileOpen(const CSourceDataInfo* pInfo) override;

    /// Makes the next FileOpen read from an open descriptor, from its current position, instead of the path of the
    /// description: from standard input, for example, or from a pipe, which has no size and is read once. `pHead` are
    /// bytes that the host has already read from it in order to examine them: the file begins with them. A negative
    /// descriptor means that the data end after them. Descriptor and bytes must be valid until FileOpen, which
    /// duplicates the descriptor; that of the host stays open.
    ///
    /// A refill takes what the system has available, so that rows can be read before all have arrived. Until the end
    /// is reached HasNextLineData is true and GetReadPosition 0; a failed read ends the data. MoveFileBegin,
    /// MoveFileEnd and GetSpecificLineData fail with error code 1. FileClose clears this setting.
    ///
    /// Returns false, with nothing changed, for more than 64000 bytes.
    bool SetStream(int iDescriptor, const char* pHead, DWORD dwHeadSize);

    /// True until a refill at the end of the file has been tried. Reads nothing. A file that has become shorter since
    /// FileOpen ends at its new end; the read that reaches it sets the error code 38.
    bool HasNextLineData() override;

    /// Goes back to the first byte; a BOM is then data. On failure returns false with the position unchanged.
    bool MoveFileBegin() override;
    bool MoveFileEnd() override;

    /// Rewinds, skips `dwLine` line ends (those inside quotes count too) and reads the record there. False when
    /// the file ends before; a file with exactly `dwLine` line ends, the last at its end, has no such record.
    /// Resets the error code, as a record read does.
    bool GetSpecificLineData(DWORD dwLine, const char**& ppData, const WORD*& pLen, DWORD& dwCount) override;

    DWORD GetErrorCode() override;

    /// The bytes of the fills before the current one in thousandths of the file's size.
    int GetReadPosition() override;

    /// Closes the file, if one is open; always true. The buffers stay.
    bool FileClose();

    /// The field separator; ',' at first.
    void SetSeparator(char cSeparator);
    /// The line end; CR and LF at first. 0 as the second byte makes a line end of one byte.
    void SetDelimiter(char cPre, char cPost);
    /// FileOpen replaces the character set with the description's.
    void SetCharSet(CSourceDataInfo::EReadCharSet eCharSet);
    /// After FileOpen the character set that was determined.
    CSourceDataInfo::EReadCharSet GetCharSet();

protected:
    /// Throws std::bad_alloc.
    VCTextFileOperater(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize);
    ~VCTextFileOperater() override;

    /// Lengths and offsets in the line buffer have 16 bits; a greater dwMaxLineSize is taken as this.
    static constexpr DWORD LINE_SIZE_MAX = 65535; // used by value: a reference would make it a symbol of the library

    /// The read position as pointers; see src/text/CFillCursor.h.
    class CFillCursor;
    /// Bytes of the read buffer that are still to be examined: from `pNext` up to `pEnd`.
    struct SFill {
        const unsigned char* pNext; ///< the next byte
        const unsigned char* pEnd;  ///< the end of the current fill
    };
    /// What is left of the current fill; valid until the next refill.
    SFill GetFill() const { return {m_pReadBuff.get() + m_dwReadBuffPos, m_pReadBuff.get() + m_dwReadSize}; }
    /// At the end of the fill, `pNext`: the next fill, from HasNextRecordByte; empty at the end of the file.
    SFill GetNextFill(const unsigned char* pNext);
    /// Stores a position within a fill of GetFill or GetNextFill.
    void SetReadPosition(const unsigned char* pNext) {
        m_dwReadBuffPos = static_cast<DWORD>(pNext - m_pReadBuff.get());
    }

    /// Called before every refill, while the buffer still holds the old fill.
    virtual bool OnReread();

    /// Allocates the four areas, zero-filled. Throws std::bad_alloc; nothing stays allocated then.
    void GetArea();
    /// Frees all four.
    void FreeArea();
    /// Empties the read buffer and sets the offset to 0.
    void FileInitialize();
    /// The same, and clears the file size.
    void Initialize();

    /// The byte at the read position, unchecked.
    char GetSrcDataWord();
    /// True if there is a byte at the read position, after a refill if necessary. False at the end of the file and
    /// after a failed read, whose error code is kept.
    bool HasNextSrcData();
    /// As HasNextSrcData, but does not retry after a read has failed in the current record: the retry could succeed,
    /// and the loss in between would go unnoticed.
    bool HasNextRecordByte();
    /// After a pre-delimiter: true when the line end is complete; its second byte is then consumed.
    bool TakePostDelimiter();
    /// Consumes everything through the next line end. False when there is none.
    bool SkipPastLineEnd();
    /// True when the next byte is the pre-delimiter; consumes nothing.
    bool IsPreNewLine();
    /// True when the post-delimiter is 0, or is the next byte, which is then consumed.
    bool IsPostNewLine();
    /// A byte of 0x80 or above is never a delimiter, whatever is set.
    bool IsPreDelimiter(unsigned char cByte) const {
        return cByte < 0x80 && static_cast<char>(cByte) == m_cPreDelimiter;
    }
    /// The same for the post-delimiter.
    bool IsPostDelimiter(unsigned char cByte) const {
        return cByte < 0x80 && static_cast<char>(cByte) == m_cPostDelimiter;
    }
    // What SetDelimiter or SetSeparator has set.
    char GetPreDelimiter();
    char GetPostDelimiter();
    char GetSeparator();

    /// Skips one byte.
    void AddReadBuffPos();
    /// The offset in the read buffer of the next byte.
    DWORD GetReadBuffPos() const;
    /// Copies bytes of the read buffer. False, with nothing copied, when `dwDestSize` is below `dwLen` or the range
    /// leaves the fill's 64000 bytes.
    bool CopyReadBuffData(char* pDest, DWORD dwDestSize, DWORD dwOffset, DWORD dwLen) const;
    /// Truncates a field of the line buffer to `dwSizeLimit` bytes without splitting a double-byte character and ends
    /// it with a NUL. Returns the number of bytes kept.
    static DWORD FinishField(char* pField, DWORD dwLength, DWORD dwSizeLimit) {
        if (dwLength > dwSizeLimit)
            dwLength = static_cast<DWORD>(Platform::KeptTextLength(pField, dwLength, dwSizeLimit));
        pField[dwLength] = SCDataAccessDefine::NULL_CODE;
        return dwLength;
    }
    /// Takes the system's last error as the error code.
    void SetCsvDataAccessErrorCode();
    /// Clears the error code.
    void InitialErrorCode();

    std::unique_ptr<char[]> m_pLineBuff;          ///< dwMaxLineSize + 1 bytes: the record's fields, each with a NUL
    std::unique_ptr<const char*[]> m_ppFieldData; ///< dwMaxFieldCnt pointers into the line buffer
    std::unique_ptr<WORD[]> m_pFieldLen;          ///< dwMaxFieldCnt lengths in bytes
    DWORD m_dwMaxFieldSize;                       ///< the sizing limits as given
    DWORD m_dwMaxLineSize;                        ///< in bytes
    DWORD m_dwMaxFieldCnt;                        ///< a number of fields
    std::unique_ptr<unsigned char[]> m_pReadBuff; ///< READ_BUFF_SIZE + 1 bytes; the last one stays 0
    DWORD m_dwReadBuffPos = 0;                    ///< next byte to examine
    DWORD m_dwReadSize = 0;                       ///< bytes of the current fill
    char m_cSeparator = SCDataAccessDefine::CAMMA_CODE;  ///< as SetSeparator has set it
    char m_cPreDelimiter = SCDataAccessDefine::CR_CODE;  ///< as SetDelimiter has set it
    char m_cPostDelimiter = SCDataAccessDefine::LF_CODE; ///< as SetDelimiter has set it; 0 when there is none
    CSourceDataInfo::EReadCharSet m_eCharSet =
        CSourceDataInfo::RCS_AUTO; ///< as set; for RCS_AUTO as FileOpen has determined
    HANDLE m_hFile = nullptr;      ///< the open file; null while there is none
    LONGLONG m_llFileSize = 0;     ///< of the open file, in bytes
    LONGLONG m_llReadOffset = 0;   ///< file offset of the first byte of the current fill
    DWORD m_dwErrorCode = 0;       ///< of the last failure; 0 for none

private:
    struct SStream {
        bool bGiven = false;
        int iDescriptor = -1;
        const char* pHead = nullptr;
        DWORD dwHeadSize = 0;

        bool HasEnded() const { return bGiven && iDescriptor < 0; }
    };
    /// Value of m_llFileSize: the end of a stream is not known yet.
    static constexpr LONGLONG SIZE_UNKNOWN = std::numeric_limits<LONGLONG>::max();

    bool MoveFilePointer(DWORD dwMoveMethod);
    bool ReadFirstFill(const SStream& stream);
    bool ReadFill();
    bool TakeFileSize(const SStream& stream);
    void DetectCharSet();

    SStream m_stream; ///< of the next FileOpen
    bool m_bStream = false;
};

} // namespace NSTQ::NSTQCore
