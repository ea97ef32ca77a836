"""The module over the samples of the examples and over workbooks that openpyxl writes."""

import datetime
import decimal
import gc
import pathlib
import pickle
import resource
import threading

import pytest
import tqcaccess

DATA = pathlib.Path(__file__).resolve().parent.parent.parent / "examples" / "data"
PARTS = [
    (1, "M4 screw, 20 mm", "A-12", 1500, decimal.Decimal("0.125"), datetime.datetime(2023, 3, 15), None),
    (2, "washer", "A-13", 820, decimal.Decimal("0.04"), datetime.datetime(2023, 3, 15, 9), "order 2 boxes"),
    (3, "hinge", "B-02", 36, decimal.Decimal("2.49"), datetime.datetime(2023, 3, 27, 12), "left or right"),
]


@pytest.fixture
def write(tmp_path):
    def write_file(name, content):
        path = tmp_path / name
        path.write_bytes(content)
        return path

    return write_file


@pytest.fixture
def workbook(tmp_path):
    """Writes a sheet for each keyword, from rows."""
    openpyxl = pytest.importorskip("openpyxl")

    def write_workbook(**sheets):
        book = openpyxl.Workbook()
        book.remove(book.active)
        for name, rows in sheets.items():
            sheet = book.create_sheet(name)
            for row in rows:
                sheet.append(row)
        path = tmp_path / "帳簿.xlsx"
        book.save(path)
        return path

    return write_workbook


@pytest.mark.parametrize("name", ["stock.accdb", "stock.mdb"])
def test_rows_of_a_database_have_its_types(name):
    with tqcaccess.rows(DATA / name, "parts") as rows:
        assert [column.type for column in rows.columns] == [
            "int", "str", "str", "int", "Decimal", "datetime", "str",
        ]  # fmt: skip
        assert rows.row_count == 3
        assert list(rows) == PARTS
        assert rows.progress == 1000


@pytest.mark.parametrize(
    "name, options",
    [
        ("prices-utf8.csv", {}),
        ("prices-sjis.csv", {}),
        ("prices-sjis.csv", {"encoding": "cp932"}),
        ("prices.xls", {}),
        ("prices.xlsx", {"table": 0}),
        ("prices-locked.xlsx", {"password": "secret"}),
        ("prices-locked.xtqf", {"password": "secret"}),
    ],
)
def test_each_kind_of_source_gives_the_same_rows(name, options):
    with tqcaccess.rows(DATA / name, **options) as rows:
        assert [column.name for column in rows.columns][:2] == ["商品", "店舗"]
        assert next(rows)[:2] == ("りんご", "東京 駅前")


def test_tables_are_listed_with_their_sizes(write, workbook):
    assert tqcaccess.tables(DATA / "stock.accdb")[:2] == [("Parts", 3, 7, None), ("Places", 2, 2, None)]
    assert tqcaccess.tables(workbook(**{"見積 1": [["a"], [1]], "空": []})) == [
        ("見積 1", 1, 1, None),
        ("空", 0, 0, None),
    ]
    assert tqcaccess.tables(write("a.csv", b"a,b\n1,2\n")) == [("", None, 2, None)]


def test_the_type_of_a_sheets_column_is_what_all_its_cells_share(workbook):
    day = datetime.datetime(1904, 2, 29, 12, 30)
    rows = [
        ["number", "date", "yes", "text", "mixed", "nothing"],
        [1, day, True, "あ", 1, None],
        [2.5, None, False, "", "x", None],
        [None, datetime.datetime(9999, 12, 31), None, None, True, None],
    ]
    with tqcaccess.rows(workbook(S=rows)) as read:
        assert [column.type for column in read.columns] == ["float", "datetime", "bool", "str", "str", "str"]
        assert list(read) == [
            (1.0, day, True, "あ", "1", None),
            (2.5, None, False, None, "x", None),
            (None, datetime.datetime(9999, 12, 31), None, None, "-1", None),
        ]
    with tqcaccess.rows(workbook(S=rows[1:]), header=False) as read:
        assert [column.name for column in read.columns] == ["F1", "F2", "F3", "F4", "F5"]
        assert next(read)[0] == 1.0


def test_text_keeps_what_it_has(write):
    ragged = write("ragged.txt", "a\tb\n１\t2\t3\n\n".encode())
    with tqcaccess.rows(ragged) as rows:
        assert list(rows) == [("１", "2", "3"), ("",)]
    fixed = write("f.dat", b"abcd12\nefgh34\n")
    assert list(tqcaccess.rows(fixed, type="fix", widths=[4, 2], header=False)) == [("abcd", "12"), ("efgh", "34")]
    assert list(tqcaccess.rows(write("e.csv", b""))) == []
    semicolon = write("s.csv", b'a;b\n"x;y";\x80\n')
    assert list(tqcaccess.rows(semicolon, separator=";", encoding="cp1252")) == [("x;y", "€")]


def test_invalid_text_is_an_error_of_its_row(write):
    path = write("bad.csv", b"a,b\nok,1\nbad\xff,2\nok,3\n")
    rows = tqcaccess.rows(path, encoding="utf-8")
    assert next(rows) == ("ok", "1")
    with pytest.raises(tqcaccess.InvalidTextError, match="row 3: field 1 has bytes that are invalid in utf-8"):
        next(rows)
    assert list(rows) == [("ok", "3")]
    assert list(tqcaccess.rows(path, encoding="utf-8", errors="replace"))[1] == ("bad\ufffd", "2")


@pytest.mark.parametrize(
    "error, name, options, text",
    [
        (tqcaccess.NotFoundError, "missing.csv", {}, "no such file"),
        (tqcaccess.NotFoundError, "stock.accdb", {"table": "none"}, 'no table "none"; there are: Parts'),
        (tqcaccess.NotFoundError, "stock.accdb", {"table": 9}, "there is no table 9"),
        (tqcaccess.PasswordError, "prices-locked.xlsx", {}, "needs a password"),
        (tqcaccess.PasswordError, "stock-locked.accdb", {"password": "wrong"}, "password"),
        (tqcaccess.UnsupportedError, "prices-utf8.csv", {"type": "xlsx"}, "not a workbook|unknown|neither"),
        (ValueError, "prices-utf8.csv", {"encoding": "klingon"}, "unknown encoding"),
        (ValueError, "prices-utf8.csv", {"type": "pdf"}, "type must be"),
        (ValueError, "prices-utf8.csv", {"separator": "--"}, "separator"),
        (ValueError, "ledger.txt", {"type": "fix"}, "widths"),
        (ValueError, "ledger.txt", {"type": "fix", "widths": [0]}, "from 1 to 65535"),
    ],
)
def test_errors_say_what_where_and_why(error, name, options, text):
    with pytest.raises(error, match=text) as raised:
        tqcaccess.rows(DATA / name, **options)
    if isinstance(raised.value, tqcaccess.Error):
        assert raised.value.file == str(DATA / name)
        assert str(raised.value).startswith(str(DATA / name) + ": ")
        copy = pickle.loads(pickle.dumps(raised.value))
        assert (copy.message, copy.code) == (raised.value.message, raised.value.code)


def test_closing_early_frees_the_source():
    with tqcaccess.rows(DATA / "stock.accdb") as rows:
        next(rows)
    rows.close()
    with pytest.raises(ValueError, match="closed"):
        next(rows)


def test_ten_thousand_opens_leave_nothing(write):
    def peak():
        gc.collect()
        return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss

    bad = write("bad.csv", b"a\n\xff\n")
    before = 0
    for turn in range(10000):
        next(tqcaccess.rows(DATA / "stock.accdb"))
        if turn % 10 == 0:
            tqcaccess.read(DATA / "stock.accdb").__arrow_c_stream__()
            with pytest.raises(tqcaccess.InvalidTextError):
                list(tqcaccess.rows(bad, encoding="utf-8"))
        if turn == 1000:
            before = peak()
    assert peak() - before < 4096  # KiB


def test_rows_that_are_written_are_read_again(tmp_path):
    path = tmp_path / "出力.csv"
    day = datetime.datetime(2023, 3, 15, 9)
    values = [1, 0.1, 1e300, float("nan"), decimal.Decimal("1E+3"), True, day, day.date(), None, 'あ "い",\n', ""]
    tqcaccess.write(path, [values, ["b"]], header=["表"], encoding="cp932", separator=";", line_end="\n")
    assert path.read_bytes().decode("cp932").split("\n")[0] == "表"
    with tqcaccess.rows(path, header=False, separator=";", encoding="cp932", type="csv") as rows:
        assert list(rows) == [
            ("表",),
            ("1", "0.1", "1e+300", "", "1000", "TRUE", "2023-03-15 09:00:00", "2023-03-15", "", 'あ "い",\n', ""),
            ("b",),
        ]
    for error, row, options in [
        (tqcaccess.InvalidTextError, ["a", "あ"], {"encoding": "cp1252"}),
        (tqcaccess.LimitError, ["a" * 65536], {}),
        (TypeError, [b"a"], {}),
        (TypeError, "abc", {}),
        (ValueError, [], {"line_end": "\r"}),
        (ValueError, [], {"separator": "あ"}),
        (ValueError, [], {"encoding": "klingon"}),
    ]:
        with pytest.raises(error):
            tqcaccess.write(path, [["first"], row], **options)
    assert path.read_bytes() == b"first\r\n"
    with pytest.raises(tqcaccess.Error, match="no such"):
        tqcaccess.write(tmp_path / "no" / "a.csv", [])


def test_two_threads_read_two_encodings(write):
    texts = {"utf-8": "価格", "cp1252": "Größe", "gbk": "价格"}
    paths = {encoding: write(encoding, (text + "\n").encode(encoding) * 500) for encoding, text in texts.items()}
    wrong = []

    def read(encoding):
        for _ in range(20):
            rows = list(tqcaccess.rows(paths[encoding], encoding=encoding, header=False, type="csv"))
            if rows != [(texts[encoding],)] * 500:
                wrong.append(encoding)

    threads = [threading.Thread(target=read, args=(encoding,)) for encoding in texts]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert wrong == []


def test_streams_of_one_table_do_not_disturb_each_other():
    table = tqcaccess.read(DATA / "prices-locked.xlsx", password="secret")
    failed = []

    def open_streams():
        try:
            for _ in range(5):
                table.__arrow_c_stream__()
        except Exception as error:
            failed.append(error)

    threads = [threading.Thread(target=open_streams) for _ in range(6)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert failed == []


class TestFrames:
    @pytest.fixture(autouse=True)
    def _pandas(self):
        self.pandas = pytest.importorskip("pandas")

    def test_a_database_gives_a_typed_frame(self):
        frame = tqcaccess.read(DATA / "stock.accdb", "Parts").to_pandas()
        assert [str(dtype) for dtype in frame.dtypes] == [
            "int64", "object", "object", "int64", "object", "datetime64[ns]", "object",
        ]  # fmt: skip
        assert list(frame.columns)[:2] == ["Id", "Part"]
        assert [tuple(row) for row in frame.itertuples(index=False)] == PARTS

    def test_missing_values_and_early_dates(self, workbook):
        rows = [["n", "b", "d", "m"], [1, True, datetime.datetime(2020, 1, 1), 5], [None, None, None, 6]]
        frame = tqcaccess.read(workbook(S=rows)).to_pandas()
        assert list(frame.columns) == ["n", "b", "d", "m"]
        assert [str(dtype) for dtype in frame.dtypes] == ["float64", "boolean", "datetime64[ns]", "float64"]
        assert list(frame.isna().sum()) == [1, 1, 1, 0]
        late = tqcaccess.read(workbook(S=[["d"], [datetime.datetime(9999, 1, 1)]])).to_pandas()
        assert late["d"][0] == datetime.datetime(9999, 1, 1)

    def test_many_batches_make_one_frame(self, write):
        lines = "".join(f"{i},あ{i}\n" for i in range(200000))
        table = tqcaccess.read(write("big.csv", ("a,b\n" + lines).encode()))
        for _ in range(2):  # each reading starts at the first row
            frame = table.to_pandas()
            assert (len(frame), frame["b"][199999]) == (200000, "あ199999")

    def test_empty_and_ragged_text(self, write):
        assert tqcaccess.read(write("e.csv", b"")).to_pandas().shape == (0, 0)
        assert tqcaccess.read(write("h.csv", b"a,b\n")).to_pandas().shape == (0, 2)
        assert tqcaccess.read(write("r.csv", b"a,b\n1\n")).to_pandas()["b"][0] is None
        with pytest.raises(tqcaccess.LimitError, match="row 2: 3 fields, but there are 2 columns"):
            tqcaccess.read(write("l.csv", b"a,b\n1,2,3\n")).to_pandas()
