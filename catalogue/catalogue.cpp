#include "catalogue/catalogue.h"

#include <algorithm>
#include <iterator>

#include "frame/evaluation.h"
#include "platform/names.h"

#define ROW(name, nIndep, nDep, nParams) MODEL(name);
#define ROW_OF(name, nIndep, nDep, nParams, function)
#include "catalogue/rows.inc"
#undef ROW
#undef ROW_OF

namespace curvebank {

#define ROW(name, nIndep, nDep, nParams) {nIndep, nDep, nParams, 0, #name, name},
#define ROW_OF(name, nIndep, nDep, nParams, function) {nIndep, nDep, nParams, 0, #name, function},
const ModelCatalogEntry catalogue[catalogue_size] = {
#include "catalogue/rows.inc"
};
#undef ROW
#undef ROW_OF

namespace {

/// The row of that name, or null.
const ModelCatalogEntry *find(const char *name)
{
    const auto *row = std::find_if(std::begin(catalogue), std::end(catalogue),
                                   [name](const auto &entry) { return platform::same_name(entry.name, name); });
    return row != std::end(catalogue) ? row : nullptr;
}

}  // namespace

uint16_t catalogue_indep_count(const char *name)
{
    const ModelCatalogEntry *row = find(name);
    return row ? row->nIndep : uint16_t{0};
}

uint16_t catalogue_param_count(const char *name)
{
    const ModelCatalogEntry *row = find(name);
    return row ? row->nParams : uint16_t{0};
}

}  // namespace curvebank

extern "C" {

ModelFunc Get_Func(const char *name, uint16_t *nIndep, uint16_t *nDep, uint16_t *nParams, uint16_t *reserved)
{
    const auto *row = curvebank::find(name);
    if (!row) return nullptr;
    if (nIndep) *nIndep = row->nIndep;
    if (nDep) *nDep = row->nDep;
    if (nParams) *nParams = row->nParams;
    if (reserved) *reserved = row->reserved;
    return row->function;
}

ModelFunc get_funx(const char *name)
{
    return Get_Func(name, nullptr, nullptr, nullptr, nullptr);
}

void *get_funx_list(void)
{
    return nullptr;
}

}  // extern "C"
