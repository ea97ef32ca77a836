"""A table that is read as a whole."""

from __future__ import annotations

import itertools
from typing import TYPE_CHECKING, Any, Callable, Dict, List, NamedTuple, Optional, Tuple

from . import _tqcaccess

if TYPE_CHECKING:
    import pandas

#: The Python type of a value by the first letter of its format in Arrow.
_PYTHON_TYPES = {
    "l": "int",
    "g": "float",
    "d": "Decimal",
    "t": "datetime",
    "b": "bool",
    "z": "bytes",
    "u": "str",
}

#: How numpy reads the bytes of a column; what is not here are Python objects.
_NUMPY_TYPES = {"l": "int64", "g": "float64", "t": "datetime64[us]", "b": "bool"}
#: What pandas calls them when values are missing.
_NULLABLE_TYPES = {"l": "Int64", "b": "boolean"}


class Column(NamedTuple):
    """A column of a table."""

    #: Its name.
    name: str
    #: What its values are in Python: "int", "float", "Decimal", "datetime", "bool", "bytes" or "str".
    type: str
    #: The number of its type in ADO's DataTypeEnum: 3 for an integer of 32 bits, 202 for text.
    data_type: int
    #: Its type as a format string of Arrow.
    arrow_format: str

    @classmethod
    def _make_from(cls, column: Tuple[str, int, str]) -> "Column":
        name, data_type, arrow_format = column
        return cls(name, _PYTHON_TYPES[arrow_format[0]], data_type, arrow_format)


class Table:
    """A sheet, table or text. Each reading starts at its first row, and opens the source anew except for the first, so
    that several may go on at the same time, on different threads as well.

    Engines take it as it is: duckdb.sql("SELECT * FROM parts"), pyarrow.table(parts), polars.DataFrame(parts).
    """

    def __init__(
        self, source: "_tqcaccess.Source", position: int, open_source: Callable[[], "_tqcaccess.Source"]
    ) -> None:
        self._open_source = open_source
        self._position = position
        self._encoding = source.encoding
        # The rows that told the columns are the ones of the first reading.
        self._first: Optional[_tqcaccess.Rows] = source.open_rows(position)
        self._columns = [Column._make_from(column) for column in self._first.columns]
        count = self._first.row_count
        self._row_count = count if count >= 0 else None

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
        return self._row_count

    def _open(self) -> "_tqcaccess.Rows":
        rows, self._first = self._first, None
        return rows if rows is not None else self._open_source().open_rows(self._position)

    def __arrow_c_stream__(self, requested_schema: Any = None) -> Any:
        """The rows as a stream of the Arrow C data interface, in a capsule.

        The schema is the table's own, whatever is requested. Errors of the stream are errors of the engine.
        """
        return self._open().export_stream()

    def to_pandas(self) -> "pandas.DataFrame":
        """Reads all rows into a data frame of pandas.

        int64, float64, bool and datetime64[ns] columns; Int64 and boolean when values are missing, object with
        datetime when dates are outside of what nanoseconds can represent (1677 to 2262), object with Decimal, bytes or
        str for the rest. Raises ImportError without pandas, and what rows raises, LimitError also for a row of text
        with more fields than there are columns.
        """
        import pandas

        chunks: List[List[Tuple[Any, Any]]] = [[] for _ in self._columns]
        rows = self._open()
        try:
            while True:
                batch = rows.next_columns()
                if batch is None:
                    break
                for kept, chunk in zip(chunks, batch):
                    kept.append(chunk)
        finally:
            rows.close()
        data: Dict[int, Any] = {}
        for position, column in enumerate(self._columns):
            data[position] = _make_series(column.arrow_format[0], chunks[position])
            chunks[position] = []
        frame = pandas.DataFrame(data, copy=False)
        frame.columns = pandas.Index([column.name for column in self._columns], dtype=object)
        return frame


def _make_series(kind: str, chunks: List[Tuple[Any, Any]]) -> Any:
    import numpy
    import pandas

    if kind not in _NUMPY_TYPES:
        count = sum(len(chunk) for chunk, _ in chunks)
        # An assignment would look for the items of each value first.
        values = numpy.fromiter(itertools.chain.from_iterable(chunk for chunk, _ in chunks), dtype=object, count=count)
        return pandas.Series(values, copy=False)

    dtype = _NUMPY_TYPES[kind]
    parts = [numpy.frombuffer(chunk, dtype=dtype) for chunk, _ in chunks]
    values = numpy.concatenate(parts) if parts else numpy.empty(0, dtype=dtype)
    nulls = None
    if any(missing is not None for _, missing in chunks):
        nulls = numpy.concatenate(
            [
                numpy.zeros(len(part), dtype=bool) if missing is None else numpy.frombuffer(missing, dtype=bool)
                for part, (_, missing) in zip(parts, chunks)
            ]
        )
    if kind == "t":
        return _make_dates(values, nulls)
    if nulls is None:
        return pandas.Series(values, copy=False)
    if kind == "g":
        values[nulls] = numpy.nan
        return pandas.Series(values, copy=False)
    array = pandas.arrays.IntegerArray if kind == "l" else pandas.arrays.BooleanArray
    return pandas.Series(array(values, nulls), copy=False)


def _make_dates(values: Any, nulls: Any) -> Any:
    import numpy
    import pandas

    if nulls is not None:
        values[nulls] = numpy.datetime64("NaT")
    limits = numpy.array(["1677-09-22", "2262-04-11"], dtype="datetime64[us]")
    known = values[~numpy.isnat(values)]
    if len(known) > 0 and (known.min() < limits[0] or known.max() > limits[1]):
        return pandas.Series(values.astype(object), dtype=object)
    return pandas.Series(values.astype("datetime64[ns]"), copy=False)
