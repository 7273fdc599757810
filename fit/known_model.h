// A model of the library together with what the reference says of it.

#pragma once

#include <string_view>
#include <vector>

#include "fit/library.h"
#include "reference/reference.h"

namespace curvebank::fit {

struct KnownModel {
    Model model;
    const reference::ModelReference *about;
};

/// The model of that name, ignoring case. Throws Error with the nearest names when there is none.
KnownModel find_model(const Library &library, std::string_view name);

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

}  // namespace curvebank::fit
