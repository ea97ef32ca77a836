"""The records of xls workbooks with one sheet; for the benchmarks and seeds."""
import struct

END_OF_FILE, CODE_PAGE, SHEET, FORMAT_USE, SHARED, CONTINUE = 0x0A, 0x42, 0x85, 0xE0, 0xFC, 0x3C
NUMBER, SMALL_NUMBER, SHARED_TEXT, TEXT = 0x203, 0x27E, 0xFD, 0x204
EXCEL_5, EXCEL_97 = 0x500, 0x600


def record(kind, body=b""):
    return struct.pack("<HH", kind, len(body)) + body


def cell(kind, row, column, value, style=0):
    return record(kind, struct.pack("<HHH", row, column, style) + value)


def beginning(kind, version=EXCEL_97):
    return record(0x809, struct.pack("<HHHH", version, kind, 0x0DBB, 0x07CC) + bytes(8 if version == EXCEL_97 else 0))


def style(number_format):
    return record(FORMAT_USE, struct.pack("<HH", 0, number_format) + bytes(16))


def shared_texts(texts, room=8224):
    """Begins a record before a text that would not fit as a whole."""
    body, kind, records = bytearray(struct.pack("<II", len(texts), len(texts))), SHARED, b""
    for text in texts:
        item = struct.pack("<HB", len(text), 0) + text.encode("latin-1")
        if len(body) + len(item) > room:
            records += record(kind, bytes(body))
            body, kind = bytearray(), CONTINUE
        body += item
    return records + record(kind, bytes(body))


def workbook(shared, cells, version=EXCEL_97):
    """`shared` stands behind the list of sheets, `cells` in the sheet."""
    head = beginning(5, version) + record(CODE_PAGE, struct.pack("<H", 1200 if version == EXCEL_97 else 932))
    name = b"\x06" + (b"\0" if version == EXCEL_97 else b"") + b"Sheet1"
    shared += record(END_OF_FILE)
    position = len(head) + 4 + 6 + len(name) + len(shared)
    head += record(SHEET, struct.pack("<IH", position, 0) + name)
    return head + shared + beginning(0x10, version) + cells + record(END_OF_FILE)
