"""Reads text, workbooks, databases and packages as typed rows, Arrow streams and data frames, and writes CSV.

    import tqcaccess

    for row in tqcaccess.rows("orders.accdb", "Orders"):
        print(row)                                    # (17, 'Kyoto', Decimal('12.5000'), datetime(...), None)

    frame = tqcaccess.read("book.xlsx", "Sheet1").to_pandas()

Sources are comma- and tab-separated text, fixed-length text, Excel workbooks (xls, xlsx), Access databases (mdb, accdb)
and xtqf packages. Nothing is guessed about values: text sources give str, databases the types of their columns, and a
sheet the type that all cells of a column share, else str.

One thread at a time uses an open source; a second one gets a RuntimeError. Different sources are independent, and the
interpreter lock is released while they are read.
"""

from __future__ import annotations

import functools
import os
from typing import Iterator, List, NamedTuple, Optional, Sequence, Tuple, Union

from . import _tqcaccess
from ._errors import (
    Error,
    InvalidTextError,
    LimitError,
    NotFoundError,
    PasswordError,
    ReadError,
    UnsupportedError,
)
from ._table import Column, Table
from ._write import write

__all__ = [
    "Column",
    "Error",
    "InvalidTextError",
    "LimitError",
    "NotFoundError",
    "PasswordError",
    "ReadError",
    "Rows",
    "Table",
    "TableInfo",
    "UnsupportedError",
    "read",
    "rows",
    "tables",
    "write",
]

__version__: str = _tqcaccess.version

_TYPES = {name: number for number, name in enumerate(("csv", "tsv", "fix", "xls", "mdb", "xlsx", "accdb", "xtqf"), 1)}
_FIRST_WITH_TABLES, _LAST_WITH_TABLES = _TYPES["xls"], _TYPES["accdb"]

PathLike = Union[str, "os.PathLike[str]"]


class TableInfo(NamedTuple):
    """A sheet, table or view of a source."""

    #: Its name; empty for text.
    name: str
    #: The number of rows without the header row; None for text, which does not tell, and when `error` is set.
    rows: Optional[int]
    #: The number of columns; None when `error` is set.
    columns: Optional[int]
    #: Why it cannot be opened; None when it can.
    error: Optional[Error] = None


def _open(
    path: PathLike,
    *,
    header: bool = True,
    encoding: Optional[str] = None,
    password: Optional[str] = None,
    separator: Optional[str] = None,
    type: Optional[str] = None,
    widths: Optional[Sequence[int]] = None,
    errors: str = "strict",
) -> "_tqcaccess.Source":
    if errors not in ("strict", "replace"):
        raise ValueError('errors must be "strict" or "replace"')
    if separator is not None and (len(separator) != 1 or not separator.isascii()):
        raise ValueError("the separator must be one ASCII character")
    if type is not None and type not in _TYPES:
        raise ValueError("type must be one of " + ", ".join(_TYPES))
    return _tqcaccess.open(
        os.fspath(path),
        _TYPES[type] if type is not None else 0,
        password,
        encoding,
        separator,
        header,
        errors == "replace",
        widths,
    )


def _find(source: "_tqcaccess.Source", table: Union[str, int, None]) -> int:
    if table is None:
        return 0
    return table if isinstance(table, int) else source.find(table)


def _has_tables(source: "_tqcaccess.Source") -> bool:
    return _FIRST_WITH_TABLES <= source.type <= _LAST_WITH_TABLES


def tables(path: PathLike, password: Optional[str] = None) -> List[TableInfo]:
    """Lists the sheets of a workbook, the tables and views of a database, or the one table of text.

    Each is opened to count its rows, which reads a sheet once. One that is damaged is listed with its `error`.

    Raises Error when the source itself cannot be opened; see there.
    """
    source = _open(path, password=password)
    listed = []
    for position, name in enumerate(source.tables):
        try:
            opened = source.open_rows(position)
            count = opened.row_count
            listed.append(TableInfo(name, count if count >= 0 else None, len(opened.columns)))
        except Error as error:
            listed.append(TableInfo(name, None, None, error))
    return listed


class Rows(Iterator[Tuple[object, ...]]):
    """The rows of a table as tuples, read while they are asked for, and forward once.

    A context manager; closing early frees the source. It ends with StopIteration and then is closed.
    """

    def __init__(self, source: "_tqcaccess.Source", position: int) -> None:
        self._source = source
        self._encoding = source.encoding
        self._rows = source.open_rows(position)
        self._columns = [Column._make_from(column) for column in self._rows.columns]
        # A row of text has as many fields as it has in the file.
        self._next = self._rows.next_values if _has_tables(source) else self._rows.next_texts

    @property
    def columns(self) -> List[Column]:
        """Name and type of each column."""
        return list(self._columns)

    @property
    def encoding(self) -> str:
        """The encoding of text, such as "shift_jis"; empty for workbooks and databases."""
        return self._encoding

    @property
    def row_count(self) -> Optional[int]:
        """The number of rows without the header row; None for text, which does not tell."""
        count = self._rows.row_count
        return count if count >= 0 else None

    @property
    def progress(self) -> int:
        """How much has been read, in thousandths."""
        return self._rows.progress

    def __iter__(self) -> "Rows":
        return self

    def __next__(self) -> Tuple[object, ...]:
        row = self._next()
        if row is None:
            raise StopIteration
        return row

    def close(self) -> None:
        """Closes the source. Further rows raise ValueError; closing again does nothing."""
        self._rows.close()
        self._source.close()

    def __enter__(self) -> "Rows":
        return self

    def __exit__(self, *exception: object) -> None:
        self.close()


def rows(
    path: PathLike,
    table: Union[str, int, None] = None,
    *,
    header: bool = True,
    encoding: Optional[str] = None,
    password: Optional[str] = None,
    separator: Optional[str] = None,
    type: Optional[str] = None,
    widths: Optional[Sequence[int]] = None,
    errors: str = "strict",
) -> Rows:
    """Opens a source and returns the rows of one table as tuples.

    path       the file
    table      a sheet, table or view by its name, or by its position from 0; the first one by default
    header     whether the first row of text and of a sheet names the columns; else they are F1, F2, ...
    encoding   of text, such as "shift_jis" or "cp1252"; by default UTF-8 when the text is valid, else the ANSI code
               page of the library, which is Shift_JIS
    password   of a package, workbook or database
    separator  of delimited text: one ASCII character; by default a comma, or a TAB when the first line has one
    type       "csv", "tsv", "fix", "xls", "xlsx", "mdb", "accdb" or "xtqf"; by default as the file shows
    widths     of the columns of fixed-length text, in bytes
    errors     "strict": bytes that are invalid in the encoding raise InvalidTextError, and the next call goes on with
               the next row; "replace": they become U+FFFD in UTF-8, else the default character of the code page

    Values of databases and sheets are int, float, Decimal, datetime, bool, str, bytes or None, by the type of the
    column; those of text are str. A row of text with more than 65535 bytes raises LimitError.
    """
    source = _open(
        path,
        header=header,
        encoding=encoding,
        password=password,
        separator=separator,
        type=type,
        widths=widths,
        errors=errors,
    )
    return Rows(source, _find(source, table))


def read(
    path: PathLike,
    table: Union[str, int, None] = None,
    *,
    header: bool = True,
    encoding: Optional[str] = None,
    password: Optional[str] = None,
    separator: Optional[str] = None,
    type: Optional[str] = None,
    widths: Optional[Sequence[int]] = None,
    errors: str = "strict",
) -> Table:
    """Opens a table to be read as a whole: with to_pandas, or by any engine that takes an Arrow stream.

    The arguments are those of rows. Nothing is read yet but what tells the columns.
    """
    open_source = functools.partial(
        _open,
        path,
        header=header,
        encoding=encoding,
        password=password,
        separator=separator,
        type=type,
        widths=widths,
        errors=errors,
    )
    source = open_source()
    return Table(source, _find(source, table), open_source)
