// The structs of options of the library, as keyword arguments.
#ifndef ZEF_PYTHON_OPTIONS_H
#define ZEF_PYTHON_OPTIONS_H

#include "OptionTable.h"
#include "zef.h"

namespace TARN_PYTHON
{
// The table of a struct.
template <typename Options>
[[nodiscard]] const OptionTable<Options>& getOptionTable();
template <>
[[nodiscard]] const OptionTable<TARN_ZEF::AutoOptions>& getOptionTable();
template <>
[[nodiscard]] const OptionTable<TARN_ZEF::FinishOptions>& getOptionTable();
template <>
[[nodiscard]] const OptionTable<TARN_ZEF::RemeshOptions>& getOptionTable();
template <>
[[nodiscard]] const OptionTable<TARN_ZEF::CheckOptions>& getOptionTable();
template <>
[[nodiscard]] const OptionTable<TARN_ZEF::CompareOptions>& getOptionTable();
template <>
[[nodiscard]] const OptionTable<TARN_ZEF::FillOptions>& getOptionTable();
template <>
[[nodiscard]] const OptionTable<TARN_ZEF::ReadOptions>& getOptionTable();
template <>
[[nodiscard]] const OptionTable<TARN_ZEF::WriteOptions>& getOptionTable();

template <typename Options>
[[nodiscard]] Options readOptions(const py::dict& given)
{
    return getOptionTable<Options>().read(given);
}

void bindOptions(py::module_& module);

} // namespace TARN_PYTHON

#endif
