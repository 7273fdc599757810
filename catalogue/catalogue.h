// The catalogue: the library's fixed table of models, and the lookups by name.

#pragma once

#include <algorithm>

#include "curvebank/curvebank.h"

namespace curvebank {

struct ModelCatalogEntry {
    uint16_t nIndep, nDep, nParams, reserved;
    const char *name;
    ModelFunc function;
};

#define ROW(name, nIndep, nDep, nParams) +1
#define ROW_OF(name, nIndep, nDep, nParams, function) +1
constexpr int catalogue_size = 0
#include "catalogue/rows.inc"
    ;
#undef ROW
#undef ROW_OF
#define ROW(name, nIndep, nDep, nParams) nParams,
#define ROW_OF(name, nIndep, nDep, nParams, function) nParams,
constexpr int catalogue_largest_count = std::max({
#include "catalogue/rows.inc"
});
#undef ROW
#undef ROW_OF
extern const ModelCatalogEntry catalogue[catalogue_size];

/// The counts of the model of that name (case is ignored), or 0 when there is none.
uint16_t catalogue_indep_count(const char *name);
uint16_t catalogue_param_count(const char *name);

}  // namespace curvebank
