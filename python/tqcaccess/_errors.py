"""The exceptions of tqcaccess."""

from __future__ import annotations

from . import _tqcaccess


class Error(Exception):
    """A source that cannot be opened or read, or an output that cannot be written.

    str(error) is a sentence that says what failed, where and why.
    """

    def __init__(self, message: str, file: str = "", table: str = "", code: int = 0) -> None:
        super().__init__(message)
        #: The sentence.
        self.message = message
        #: The path of the source or output as it was given.
        self.file = file
        #: The sheet or table; empty when none is concerned.
        self.table = table
        #: The code below: an HRESULT (negative) of a workbook or database, a Windows error code of a file, else 0.
        self.code = code

    def __reduce__(self):  # type: ignore[no-untyped-def]
        return type(self), (self.message, self.file, self.table, self.code)


class NotFoundError(Error):
    """No such file, folder or table, or access denied."""


class PasswordError(Error):
    """The password is missing or wrong."""


class UnsupportedError(Error):
    """A type of file that is not read, or a damaged file."""


class LimitError(Error):
    """A row or value that is larger than can be returned."""


class ReadError(Error):
    """The system could not read or write."""


class InvalidTextError(Error):
    """Bytes that are invalid in the encoding of a text, or characters that the encoding of an output does not have."""


# In the order of the statuses of the C interface.
_INVALID_ARGUMENT, _NO_MEMORY = 2, 9
_CLASSES = {
    3: NotFoundError,
    4: PasswordError,
    5: UnsupportedError,
    6: LimitError,
    7: ReadError,
    8: InvalidTextError,
}


def _make_error(status: int, message: str, file: str, table: str, code: int) -> Exception:
    if status == _INVALID_ARGUMENT:
        return ValueError(message)
    if status == _NO_MEMORY:
        return MemoryError(message)
    return _CLASSES.get(status, Error)(message, file, table, code)


_tqcaccess.set_error_class(_make_error)
