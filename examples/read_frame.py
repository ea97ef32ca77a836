"""read_frame FILE [TABLE]: prints the columns of a sheet, table or text with their types, and its data frame."""

import sys

import tqcaccess


def main() -> int:
    if len(sys.argv) < 2:
        print("usage: read_frame FILE [TABLE]", file=sys.stderr)
        return 2
    try:
        table = tqcaccess.read(sys.argv[1], sys.argv[2] if len(sys.argv) > 2 else None)
        frame = table.to_pandas()
    except tqcaccess.Error as error:
        print(error, file=sys.stderr)
        return 1
    print(", ".join(f"{column.name} ({column.type})" for column in table.columns))
    print(frame.to_string(index=False))
    return 0


sys.exit(main())
