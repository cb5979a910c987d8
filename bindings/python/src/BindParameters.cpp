#include "bindings/python/src/Bindings.h"
#include "bindings/python/src/Errors.h"
#include "bindings/python/src/Interpreter.h"
#include "bindings/python/src/Values.h"
#include "zel/ParameterTable.h"

namespace py = pybind11;

namespace zel::python {

void bind_parameters(py::module_& module) {
    module.def(
        "parameter_names",
        [] {
            py::list names;
            for (const ParameterInfo& info : all_parameters()) names.append(info.name);
            return names;
        },
        "The names of all parameters, in order of their ids.");
    module.def(
        "parameter_facts",
        [](const std::string& wanted) {
            try {
                const ParameterInfo& info = find_parameter(wanted);
                return py::make_tuple(info.name, info.id, info.description, zel::text_of(info.kind));
            } catch (const Error& error) {
                const std::string hint = error.hint().substr(0, error.hint().find("'zelcam params'"));
                raise("UnknownName", error.problem(), error.why(), hint + "list(camera.params) has them all");
            }
        },
        py::arg("name"), "(name, id, about, kind) of the parameter that a name or an id means.");
}

}  // namespace zel::python
