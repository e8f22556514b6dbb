// The calls of the library in the extension module _zef, group by group. They take what the package zef has made ready:
// arrays of the right shape, options as a dictionary, names of files as bytes. All are short but those that take a Call.
#ifndef ZEF_PYTHON_BINDINGS_H
#define ZEF_PYTHON_BINDINGS_H

#include <pybind11/pybind11.h>

namespace TARN_PYTHON
{
void bindReconstructionCalls(pybind11::module_& module);
void bindMeshCalls(pybind11::module_& module);
void bindQueryCalls(pybind11::module_& module);
void bindFileCalls(pybind11::module_& module);

} // namespace TARN_PYTHON

#endif
