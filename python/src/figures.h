// What the library has found, as dictionaries under the library's names.
#ifndef ZEF_PYTHON_FIGURES_H
#define ZEF_PYTHON_FIGURES_H

#include <pybind11/pybind11.h>

#include "zef.h"

namespace TARN_PYTHON
{
[[nodiscard]] pybind11::dict toDict(const TARN_ZEF::CallReport& report);
[[nodiscard]] pybind11::dict toDict(const TARN_ZEF::AutoReport& report);
[[nodiscard]] pybind11::dict toDict(const TARN_ZEF::FinishReport& report);
[[nodiscard]] pybind11::dict toDict(const TARN_ZEF::RemeshReport& report);
[[nodiscard]] pybind11::dict toDict(const TARN_ZEF::MeshCheck& check);
[[nodiscard]] pybind11::dict toDict(const TARN_ZEF::BorderLoop& loop);
[[nodiscard]] pybind11::dict toDict(const TARN_ZEF::FillResult& result);
[[nodiscard]] pybind11::dict toDict(const TARN_ZEF::FormatUse& use);
// Takes the distances out of it, which can be many.
[[nodiscard]] pybind11::dict toDict(TARN_ZEF::MeshComparison&& comparison);

} // namespace TARN_PYTHON

#endif
