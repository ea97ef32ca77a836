"""Builds the wheel of tqcaccess: CMake makes the module, with the library in it; this packs it.

It needs no package from an index, so that `pip install ./python` works without a network.
"""

import base64
import csv
import hashlib
import io
import os
import pathlib
import subprocess
import sys
import sysconfig
import tempfile
import zipfile

PYTHON_FOLDER = pathlib.Path(__file__).resolve().parent.parent
PROJECT_FOLDER = PYTHON_FOLDER.parent
NAME = "tqcaccess"


def _version():
    for line in (PYTHON_FOLDER / "pyproject.toml").read_text(encoding="utf-8").splitlines():
        if line.startswith("version = "):
            return line.split('"')[1]
    raise RuntimeError("pyproject.toml has no version")


def _tag():
    interpreter = f"cp{sys.version_info.major}{sys.version_info.minor}"
    platform = sysconfig.get_platform().replace("-", "_").replace(".", "_")
    return f"{interpreter}-{interpreter}-{platform}"


def _dist_info():
    return f"{NAME}-{_version()}.dist-info"


def _metadata_files():
    metadata = (
        "Metadata-Version: 2.1\n"
        f"Name: {NAME}\n"
        f"Version: {_version()}\n"
        "Summary: Reads text, Excel workbooks, Access databases and packages as typed rows, Arrow streams and data "
        "frames\n"
        "Author: the tqcAccess authors\n"
        "License: MIT\n"
        "Requires-Python: >=3.9\n"
        "Provides-Extra: pandas\n"
        'Requires-Dist: pandas (>=1.5) ; extra == "pandas"\n'
        'Requires-Dist: numpy (>=1.23) ; extra == "pandas"\n'
    )
    wheel = f"Wheel-Version: 1.0\nGenerator: tqcaccess_build\nRoot-Is-Purelib: false\nTag: {_tag()}\n"
    licence = (PROJECT_FOLDER / "LICENSE").read_text(encoding="utf-8")
    return {"METADATA": metadata, "WHEEL": wheel, "LICENSE": licence}


def _build_module(build_folder):
    """Returns the folder of the package."""
    configure = [
        "cmake", "-S", str(PROJECT_FOLDER), "-B", build_folder, "-DCMAKE_BUILD_TYPE=Release",
        f"-DPython3_EXECUTABLE={sys.executable}", "-DTQC_BUILD_PYTHON=ON", "-DTQC_PYTHON_STATIC=ON",
        "-DTQC_BUILD_TOOL=OFF", "-DTQC_BUILD_TESTS=OFF", "-DTQC_BUILD_EXAMPLES=OFF", "-DTQC_INSTALL=OFF",
    ]  # fmt: skip
    build = ["cmake", "--build", build_folder, "--target", "tqcaccess_python", "--parallel", str(os.cpu_count() or 1)]
    for command in (configure, build):
        subprocess.run(command, check=True)
    package = pathlib.Path(build_folder) / "python" / NAME
    if not list(package.glob("_tqcaccess*")):
        raise RuntimeError("the headers of this Python are missing (Debian: python3-dev)")
    return package


def prepare_metadata_for_build_wheel(metadata_directory, config_settings=None):
    folder = pathlib.Path(metadata_directory) / _dist_info()
    folder.mkdir()
    for file, text in _metadata_files().items():
        (folder / file).write_text(text, encoding="utf-8")
    return folder.name


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    name = f"{NAME}-{_version()}-{_tag()}.whl"
    record = io.StringIO()
    rows = csv.writer(record, lineterminator="\n")
    with tempfile.TemporaryDirectory() as build_folder, zipfile.ZipFile(
        os.path.join(wheel_directory, name), "w", zipfile.ZIP_DEFLATED
    ) as wheel:

        def add(path, content):
            digest = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=").decode()
            rows.writerow([path, f"sha256={digest}", len(content)])
            wheel.writestr(path, content)

        for file in sorted(_build_module(build_folder).iterdir()):
            if file.is_file():
                add(f"{NAME}/{file.name}", file.read_bytes())
        for file, text in _metadata_files().items():
            add(f"{_dist_info()}/{file}", text.encode())
        rows.writerow([f"{_dist_info()}/RECORD", "", ""])
        wheel.writestr(f"{_dist_info()}/RECORD", record.getvalue())
    return name


def build_sdist(sdist_directory, config_settings=None):
    raise NotImplementedError("tqcaccess is built from the repository of the library: pip install ./python")
