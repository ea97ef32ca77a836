// Columns of fixed-length text in pieces of up to 64 bytes: spaces at both ends are found with a mask and not
// copied.
//
// A column with a control byte is left to the caller.
#pragma once

#include "scan/VectorUnit.h"

namespace NSTQ::Scan {

template <class TChunk, class TBlock>
class CColumnReader {
public:
    [[gnu::always_inline]] static void Read(SColumns& columns) {
        // Copies: for all the compiler knows, writing a field could change members of `columns`.
        const SColumns all = columns;
        const unsigned char* next = all.next;
        char* field = all.field;
        DWORD column = all.column;
        for (; column < all.columnCount; ++column) {
            const std::ptrdiff_t width = all.widths[column];
            // Whole blocks are read and written from each byte of the column.
            if (all.end - next < width + blockSize || all.fieldEnd - field < width + blockSize)
                break;
            const std::ptrdiff_t length =
                width <= TChunk::width ? Copy<TChunk>(next, width, field) : Copy<TBlock>(next, width, field);
            if (length < 0 || length > static_cast<std::ptrdiff_t>(all.fieldSize))
                break;
            field[length] = 0;
            all.data[column] = field;
            all.lengths[column] = static_cast<WORD>(length);
            field += length + 1;
            next += width;
        }
        columns.next = next;
        columns.field = field;
        columns.column = column;
    }

private:
    /// Returns the length of the column's text, or a negative number when it has a control byte.
    template <class TPiece>
    [[gnu::always_inline]] static std::ptrdiff_t Copy(const unsigned char* from, std::ptrdiff_t width, char* to) {
        std::ptrdiff_t copied = 0;
        std::ptrdiff_t length = 0;
        for (; width > 0; from += TPiece::width, width -= TPiece::width) {
            const TPiece piece = TPiece::Load(from);
            const std::ptrdiff_t size = width < TPiece::width ? width : TPiece::width;
            const Mask all = ~Mask{0} >> (64 - size);
            if ((piece.FindControls() & all) != 0)
                return -1;
            const Mask text = ~piece.FindSpaces() & all;
            if (text == 0) {
                // Spaces before the text are removed; after it they stay until it is known that they are trailing.
                if (copied > 0)
                    piece.Store(to + copied);
                copied += copied > 0 ? size : 0;
                continue;
            }
            const std::ptrdiff_t first = copied > 0 ? 0 : TBlock::First(text);
            TPiece::Load(from + first).Store(to + copied);
            length = copied + BehindLast(text) - first;
            copied += size - first;
        }
        return length;
    }
};

} // namespace NSTQ::Scan
