// The catalogue: the library's fixed table of models, and the lookups by name.

#pragma once

#include "frame/curvebank.h"

namespace curvebank {

struct ModelCatalogEntry {
    uint16_t nIndep, nDep, nParams, reserved;
    const char *name;
    ModelFunc function;
};

constexpr int catalogue_size = 276;
extern const ModelCatalogEntry catalogue[catalogue_size];

/// The counts of the model of that name (case is ignored), or 0 when there is none.
uint16_t catalogue_indep_count(const char *name);
uint16_t catalogue_param_count(const char *name);

}  // namespace curvebank
