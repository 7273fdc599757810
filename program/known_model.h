// A model of the library together with what the reference says of it.

#pragma once

#include <string_view>
#include <vector>

#include "curvebank/model_func.h"
#include "reference/reference.h"

namespace curvebank::program {

struct KnownModel {
    ModelFunc function;
    int nIndep, nDep, nParams;  ///< the counts of the catalogue
    const reference::ModelReference *about;
};

/// The model of that name, ignoring case. Throws Error with the nearest names when there is none.
KnownModel find_model(std::string_view name);

/// A model as the library exports it.
struct ExportedModel {
    std::string_view name;
    int ordinal;
    std::string_view catalogue_name;  ///< empty where the catalogue has no row for it
    ModelFunc function;
};

/// The export of a model by its catalogue name, or null.
const ExportedModel *find_export(std::string_view catalogue_name);

/// How a model is called: the count it is passed, and the parameters it then reads.
struct Shape {
    int nParams;
    std::vector<reference::NamedParameter> parameters;
};

/// The shape for a wanted number of parameters (0: the usual one). Only models of repeated terms have a choice;
/// throws Error where the number does not fit.
Shape shape(const KnownModel &known, int wanted);

}  // namespace curvebank::program
