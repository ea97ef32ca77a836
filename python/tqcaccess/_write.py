"""Writing CSV."""

from __future__ import annotations

import datetime
import decimal
import os
from typing import Any, Iterable, Optional, Union

from . import _tqcaccess


def _to_text(value: Any) -> Optional[str]:
    if value is None:
        return None
    if isinstance(value, bool):
        return "TRUE" if value else "FALSE"
    if isinstance(value, (bytes, bytearray)):
        raise TypeError("bytes cannot be written as text; decode them first")
    # NaN and NaT differ from themselves, and a comparison with pandas.NA gives pandas.NA.
    differs = value != value
    if differs is True or differs is value:
        return None
    if isinstance(value, float):
        return None if differs else repr(float(value))
    if isinstance(value, decimal.Decimal):
        return format(value, "f")
    if isinstance(value, datetime.datetime):
        return value.isoformat(" ")
    return str(value)


def write(
    path: Union[str, "os.PathLike[str]"],
    rows: Iterable[Iterable[object]],
    header: Optional[Iterable[str]] = None,
    *,
    encoding: Optional[str] = None,
    separator: str = ",",
    line_end: str = "\r\n",
) -> None:
    """Writes rows to a CSV file, which is created or emptied first, and so must not be the one that is being read.

    rows       lists or tuples of values, such as those of tqcaccess.rows or DataFrame.itertuples(index=False)
    header     the names for a first row
    encoding   such as "shift_jis" or "cp1252"; by default UTF-8 without a BOM
    separator  one ASCII character
    line_end   "\\r\\n" or "\\n"

    A missing value (None, NaN, NaT, pandas.NA) is an empty field; a bool is TRUE or FALSE; a date and time are in the
    form of ISO 8601 with a space between them; a float has the digits that make it the same when it is read, a Decimal
    all of its own; other values are written as by str. Fields with the separator, a quote or a line end are quoted.

    Raises InvalidTextError for characters that the encoding does not have, LimitError for a field of more than 65535
    bytes, ReadError when the file cannot be written, TypeError for bytes. The rows before are in the file then.
    """
    if len(separator) != 1 or not separator.isascii():
        raise ValueError("the separator must be one ASCII character")
    if line_end not in ("\r\n", "\n"):
        raise ValueError('line_end must be "\\r\\n" or "\\n"')
    writer = _tqcaccess.open_writer(os.fspath(path), encoding, separator, line_end == "\n")
    try:
        if header is not None:
            writer.write(list(header))
        for row in rows:
            if isinstance(row, (str, bytes)):
                raise TypeError("a row must be a list or tuple of values")
            writer.write([value if type(value) is str else _to_text(value) for value in row])
    finally:
        writer.close()
