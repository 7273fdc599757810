/* Curvebank: the lookup functions of the library. Plain C.
 *
 * <curvebank/exports.h> declares the models that are exported under a name of their own.
 */
#ifndef CURVEBANK_CURVEBANK_H
#define CURVEBANK_CURVEBANK_H

#include "model_func.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Finds a model by its catalogue name, ignoring case. Each count whose pointer is not null receives the
 * model's number of independent variables, dependent variables and parameters (as passed in nParams);
 * the last receives 0. Returns null, and writes nothing, when no model has that name. */
ModelFunc Get_Func(const char *name, uint16_t *nIndep, uint16_t *nDep, uint16_t *nParams, uint16_t *reserved);

/* Finds a model by its catalogue name, ignoring case, or returns null. */
ModelFunc get_funx(const char *name);

/* Always null: the catalogue is not handed out as a whole. */
void *get_funx_list(void);

#ifdef __cplusplus
}
#endif

#endif
