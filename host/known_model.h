// A model of the library together with what the reference says of it.

#pragma once

#include <string>
#include <vector>

#include "host/library.h"
#include "host/reference.h"

namespace curvebank::host {

struct KnownModel {
    Model model;
    const ModelReference *about;
};

/// The model of that name, ignoring case. Throws Error with the nearest names when there is none.
KnownModel find_model(const Library &library, const std::string &name);

/// The export of a model by its catalogue name, or null.
const ExportedModel *find_export(const std::string &catalogue_name);

/// How a model is called: the count it is passed, and the parameters it then reads.
struct Shape {
    int nParams;
    std::vector<ParameterReference> parameters;
};

/// The shape for a wanted number of parameters (0: the usual one). Only models of repeated terms have a choice;
/// throws Error where the number does not fit.
Shape shape(const KnownModel &known, int wanted);

}  // namespace curvebank::host
