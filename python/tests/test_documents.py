"""The documents tell the truth: their programs run, and help() has what a caller needs."""
import inspect
import re
from pathlib import Path

import pytest

import zef

TOP = Path(__file__).resolve().parents[2]
PROGRAMS = {
    f"{document.name}, {number}": program
    for document in (TOP / "docs" / "python.md", TOP / "README.md")
    for number, program in enumerate(re.findall(r"^```python\n(.*?)^```$", document.read_text(), re.M | re.S), 1)
}
CALLS = [name for name in zef.__all__ if inspect.isfunction(getattr(zef, name))]


def test_there_are_programs_in_both_documents():
    assert {name.split(",")[0] for name in PROGRAMS} == {"python.md", "README.md"}


@pytest.mark.parametrize("name", PROGRAMS)
def test_the_programs_of_the_documents_run(name, cloud, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    for scan in ("scan.xyz", "scan.las"):
        zef.write_points(scan, cloud)
    exec(compile(PROGRAMS[name], name, "exec"), {})


@pytest.mark.parametrize("name", CALLS)
def test_help_tells_every_argument(name):
    call = getattr(zef, name)
    text = inspect.getdoc(call)
    own = set(inspect.signature(call).parameters) - {"progress", "report"}
    shared = "Arguments" in text or len(text.splitlines()) <= 3
    assert text and (shared or not {word for word in own if not re.search(rf"\b{word}\b", text)})


def test_options_have_the_defaults_of_the_headers():
    header = (TOP / "include" / "finishSurface.h").read_text()
    struct = re.search(r"struct FinishOptions\n\{(.*?)\n\};", header, re.S)[1]
    members = dict(re.findall(r"^    \S+ (\w+) = ([^;]+);", struct, re.M))
    parameters = inspect.signature(zef.finish).parameters
    shown = {name: str(parameters[name].default).lower() for name in parameters if name in members}
    assert shown == members


def test_every_option_of_the_headers_is_there():
    for header, name, call in (
        ("autoReconstruct.h", "AutoOptions", zef.auto_reconstruct),
        ("RemeshOptions.h", "RemeshOptions", zef.remesh),
        ("checkMesh.h", "CheckOptions", zef.check),
        ("compareMeshes.h", "CompareOptions", zef.compare),
        ("meshHoles.h", "FillOptions", zef.fill),
        ("zef_formats.h", "ReadOptions", zef.read_points),
        ("zef_formats.h", "WriteOptions", zef.write_mesh),
    ):
        text = (TOP / "include" / header).read_text()
        struct = re.search(rf"struct (?:ZEF_API )?{name}\n\{{(.*?)\n\}};", text, re.S)[1]
        members = set(re.findall(r"^    [\w:<>]+ (\w+)(?: = [^;]+)?;", struct, re.M))
        assert members and members <= set(inspect.signature(call).parameters)
