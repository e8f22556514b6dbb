#include <pybind11/pybind11.h>

#include "Call.h"
#include "CallMessages.h"
#include "MeshHandle.h"
#include "arrays.h"
#include "bindings.h"
#include "errors.h"
#include "options.h"

PYBIND11_MODULE(_zef, module)
{
    using namespace TARN_PYTHON;
    module.doc() = "The library under the package zef; not to be called directly.";
    module.attr("version") = ZEF_PYTHON_VERSION;
    bindErrors();
    bindOptions(module);
    bindArrays(module);
    bindCall(module);
    bindMeshHandle(module);
    bindReconstructionCalls(module);
    bindMeshCalls(module);
    bindQueryCalls(module);
    bindFileCalls(module);
    CallMessages::receive();
}
