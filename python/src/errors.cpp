#include "errors.h"

#include <exception>
#include <new>

#include "zef.h"

namespace TARN_PYTHON
{
namespace py = pybind11;

namespace
{
py::object getClass(const char* name)
{
    return py::module_::import("zef._errors").attr(name);
}

void raise(const char* name, const std::exception& e)
{
    const py::object errorClass = getClass(name);
    PyErr_SetObject(errorClass.ptr(), toText(e.what()).ptr());
}

void raiseOverMemoryLimit(const TARN_ZEF::ZefOverMemoryLimit& e)
{
    const py::object errorClass = getClass("OverMemoryLimit");
    const py::object error = errorClass(toText(e.what()), e.getForecast(), e.getFittingSpacing());
    PyErr_SetObject(errorClass.ptr(), error.ptr());
}

// From the special to the general.
void translate(std::exception_ptr pException)
{
    try
    {
        std::rethrow_exception(std::move(pException));
    }
    catch (const TARN_ZEF::ZefOverMemoryLimit& e)
    {
        raiseOverMemoryLimit(e);
    }
    catch (const TARN_ZEF::ZefBadFile& e)
    {
        raise("BadFile", e);
    }
    catch (const TARN_ZEF::ZefBadArgument& e)
    {
        raise("BadArgument", e);
    }
    catch (const TARN_ZEF::ZefUnusablePoints& e)
    {
        raise("UnusablePoints", e);
    }
    catch (const TARN_ZEF::ZefTooManyPoints& e)
    {
        raise("TooManyPoints", e);
    }
    catch (const TARN_ZEF::ZefRefusedException& e)
    {
        raise("Refused", e);
    }
    catch (const TARN_ZEF::ZefBugException& e)
    {
        raise("Bug", e);
    }
    catch (const std::bad_alloc& e)
    {
        raise("OutOfMemory", e);
    }
}
} // namespace

py::str toText(const std::string& text)
{
    PyObject* const pText =
        PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "surrogateescape");
    if (pText == nullptr)
        throw py::error_already_set();
    return py::reinterpret_steal<py::str>(pText);
}

void bindErrors()
{
    // Local: other modules made by pybind11 keep their own answer to std::bad_alloc.
    py::register_local_exception_translator(translate);
}

} // namespace TARN_PYTHON
