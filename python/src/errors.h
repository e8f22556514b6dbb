// The library's exceptions as those of the package.
#ifndef ZEF_PYTHON_ERRORS_H
#define ZEF_PYTHON_ERRORS_H

#include <pybind11/pybind11.h>

#include <string>

namespace TARN_PYTHON
{
// Text of any bytes: names of files need not be UTF-8.
[[nodiscard]] pybind11::str toText(const std::string& text);

// Makes each exception of the library the class of that name in zef._errors.
void bindErrors();

} // namespace TARN_PYTHON

#endif
