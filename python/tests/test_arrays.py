"""Whatever numpy can see as points is read rightly or refused by name; nothing of the caller's changes."""
import warnings

import numpy as np
import pytest
from conftest import same_bits
from hypothesis import given, settings
from hypothesis import strategies as st
from hypothesis.extra import numpy as hnp

import zef


class Arrayish:
    """Known to numpy by its method alone."""

    def __init__(self, values):
        self.values = values

    def __array__(self, dtype=None):
        return np.asarray(self.values, dtype)


def unaligned(array):
    raw = bytearray(array.nbytes + 1)
    raw[1:] = array.tobytes()
    return np.frombuffer(raw, array.dtype, offset=1).reshape(array.shape)


def in_wider_rows(array):
    wide = np.full((len(array), 7), np.nan)
    wide[:, 1:7:2] = array
    return wide[:, 1:7:2]


SAME_POINTS = {
    "C order": np.array,
    "Fortran order": np.asfortranarray,
    "negative strides": lambda a: np.ascontiguousarray(a[::-1, ::-1])[::-1, ::-1],
    "every second row": lambda a: np.repeat(a, 2, axis=0)[::2],
    "columns of wider rows": in_wider_rows,
    "unaligned": unaligned,
    "big-endian": lambda a: a.astype(">f8"),
    "list of lists": lambda a: a.tolist(),
    "long double": lambda a: a.astype(np.longdouble),
    "__array__": Arrayish,
    "structured view": lambda a: np.ascontiguousarray(a).view([("x", "3f8")])["x"].reshape(-1, 3),
}


@pytest.mark.parametrize("form", SAME_POINTS)
def test_same_points_in_any_form_give_the_same_mesh(form, cloud):
    points = SAME_POINTS[form](cloud)
    before = np.array(points, copy=True)
    assert same_bits(zef.reconstruct(points), zef.reconstruct(cloud))
    assert np.array_equal(before, points)


@given(
    hnp.arrays(
        st.sampled_from([np.float64, np.float32]),
        st.tuples(st.integers(0, 40), st.just(3)),
        elements=st.integers(-1000, 1000),
    ),
    st.integers(-3, 3).filter(bool),
    st.sampled_from([1, -1]),
    st.booleans(),
)
@settings(deadline=None, max_examples=200)
def test_every_stride_reads_the_right_numbers(tmp_path_factory, array, row_step, column_step, fortran):
    view = (np.asfortranarray(array) if fortran else array)[::row_step, ::column_step]
    path = tmp_path_factory.getbasetemp() / "strides.xyz"
    zef.write_points(path, view)
    written = np.array([line.split() for line in path.read_text().splitlines()], float)
    assert np.array_equal(written.reshape(-1, 3), view)


def test_integers_are_points(cloud):
    whole = np.rint(cloud * 1000).astype(np.int32)
    assert same_bits(zef.reconstruct(whole), zef.reconstruct(whole.astype(float)))


REFUSED = {
    "wrong shape": (np.zeros((4, 2)), r"shape \(n, 3\), not \(4, 2\)"),
    "one row": (np.zeros(3), r"not \(3,\)"),
    "three axes": (np.zeros((2, 3, 3)), r"not \(2, 3, 3\)"),
    "0-d": (np.array(1.0), r"not \(\)"),
    "objects": (np.array([[1, 2, None]], object), "of type object"),
    "text": ([["a", "b", "c"]], "must be numbers"),
    "complex": (np.zeros((4, 3), complex), "complex128"),
    "truth values": (np.zeros((4, 3), bool), "bool"),
    "None": (None, "must be numbers"),
    "masked": (np.ma.masked_array(np.zeros((4, 3)), np.eye(4, 3)), "masked"),
}


@pytest.mark.parametrize("form", REFUSED)
def test_other_arrays_are_refused_by_name(form):
    value, text = REFUSED[form]
    with pytest.raises(zef.BadArgument, match=text):
        zef.reconstruct(value)
    with pytest.raises(zef.BadArgument):
        zef.write_points("never_written.xyz", value)


def test_rows_of_unequal_length_are_refused():
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        with pytest.raises(ValueError):
            zef.reconstruct([[1.0, 2.0, 3.0], [1.0, 2.0]])


@pytest.mark.parametrize("nothing", [np.empty((0, 3)), [], np.empty((0, 3), np.float32), np.full((9, 3), np.nan)])
def test_no_points_make_an_empty_mesh_and_a_warning(nothing, messages):
    mesh = zef.reconstruct(nothing)
    assert not mesh and mesh.vertices.shape == (0, 3) and mesh.triangles.shape == (0, 3)
    assert any(level == "WARNING" for level, _ in messages())
    assert zef.check(zef.finish(mesh, nothing)).numTriangles == 0
    assert zef.reduce(mesh, 1.0) == 0
    assert zef.border_loops(mesh) == []


def test_points_that_are_not_finite_are_left_out_with_a_warning(cloud, messages):
    dirty = np.insert(cloud, [5, 99], [[np.nan, 0, 0], [0, np.inf, 0]], axis=0)
    assert same_bits(zef.reconstruct(dirty), zef.reconstruct(cloud))
    assert ("WARNING", "Skipped 2 non-finite points") in messages()


@pytest.mark.parametrize(
    "triangles",
    [
        np.array([[0, 1, 5]]),
        np.array([[0, -1, 2]]),
        np.array([[0, 1, 2**40]]),
        np.array([[0.0, 1.0, 2.0]]),
        np.array([0, 1, 2]),
        np.array([[0, 1, 2, 3]]),
    ],
)
def test_triangles_that_cannot_be_are_refused(triangles):
    surface = (np.eye(3), triangles)
    for call in (zef.Mesh, zef.check, zef.border_loops, zef.remesh, lambda mesh: zef.compare(mesh, mesh)):
        with pytest.raises(zef.BadArgument):
            call(surface)


def test_every_kind_of_index_is_read(mesh):
    vertices, triangles = mesh
    for kind in (np.int64, np.uint32, np.uint64, np.int32):
        assert zef.check((vertices, np.asfortranarray(triangles.astype(kind)))).isSound
    small = (np.eye(3), np.array([[0, 1, 2]], np.uint8))
    assert len(zef.Mesh(small).triangles) == 1


def test_soups_of_either_shape_are_the_same(cube):
    assert same_bits(zef.remesh(cube, length=0.5), zef.remesh(cube.reshape(-1, 3), length=0.5))
    with pytest.raises(zef.BadArgument, match="multiple of 3"):
        zef.remesh(cube.reshape(-1, 3)[:-1])
