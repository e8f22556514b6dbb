#ifndef ZEF_PYTHON_OPTIONTABLE_H
#define ZEF_PYTHON_OPTIONTABLE_H

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "errors.h"

namespace TARN_PYTHON
{
namespace py = pybind11;

// What an option of that type takes, for the one who gave something else.
template <typename T>
inline const char* const WANTED = "a list of whole numbers";
template <>
inline const char* const WANTED<bool> = "True or False";
template <>
inline const char* const WANTED<double> = "a number";
template <>
inline const char* const WANTED<int> = "a whole number";
template <>
inline const char* const WANTED<std::size_t> = "a whole number of at least 0";
template <>
inline const char* const WANTED<std::string> = "a text";

// The members of a struct of options, by name: how keyword arguments become the struct, and what they are without.
//
// Defaults are those of a fresh struct, so the library's header is the only place that has them.
template <typename Options>
class OptionTable
{
public:
    // what: one sentence for help().
    template <typename T>
    OptionTable& add(const char* name, T Options::*pMember, const char* what)
    {
        vEntries.push_back({name, what,
                            [=](Options& options, py::handle value)
                            { options.*pMember = castOption<T>(name, value); },
                            [=](const Options& options) { return py::object(py::cast(options.*pMember)); }});
        return *this;
    }

    // Throws  TypeError for a name that is none of the table's, or a value of another type
    [[nodiscard]] Options read(const py::dict& given) const
    {
        Options options;
        for (const auto& [name, value] : given)
            find(py::cast<std::string>(name)).set(options, value);
        return options;
    }

    // (name, default, what it is) of each
    [[nodiscard]] py::list describe() const
    {
        const Options defaults;
        py::list list;
        for (const Entry& entry : vEntries)
            list.append(py::make_tuple(entry.name, entry.get(defaults), entry.what));
        return list;
    }

private:
    struct Entry
    {
        const char* name;
        const char* what;
        std::function<void(Options&, py::handle)> set;
        std::function<py::object(const Options&)> get;
    };

    template <typename T>
    static T castOption(const char* name, py::handle value)
    {
        try
        {
            return py::cast<T>(value);
        }
        catch (const py::cast_error&)
        {
            throw py::type_error(std::string(name) + " must be " + WANTED<T> + ", not " +
                                 py::cast<std::string>(py::repr(value)));
        }
    }

    [[nodiscard]] const Entry& find(const std::string& name) const
    {
        for (const Entry& entry : vEntries)
            if (name == entry.name)
                return entry;
        throw py::type_error("there is no option '" + name + "'");
    }

    std::vector<Entry> vEntries;
};

} // namespace TARN_PYTHON

#endif
