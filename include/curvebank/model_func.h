/* The calling contract: the signature that every Curvebank model has, its flags and its marks.
 *
 * This header is plain C. All arrays are 1-based: element 0 of p, x and y is never touched, element 0
 * of dy only by query calls.
 */
#ifndef CURVEBANK_MODEL_FUNC_H
#define CURVEBANK_MODEL_FUNC_H

#include <stdint.h>

/* What a call asks for: bits of the first argument. */
enum {
    EVAL_INIT = 1,       /* nothing is computed; the model answers 1 (a few answer 0) */
    EVAL_VALUE = 2,      /* the value into y[1], the second output or each term's share into y[2], ... */
    EVAL_DERIVS = 4,     /* the partial derivatives into dy[1..nParams]; most models write y[1] too */
    EVAL_QUERY = 8,      /* a status word into the first four bytes of dy[0], where a model has one */
    EVAL_USE_ERRPTR = 16 /* the error variable is *perr instead of errno */
};

/* What a call answers besides 0 (done) and 1 (missing values written, or an initialisation call). */
enum {
    QUERY_REPLY = -777777, /* to a query: the status word is 0 */
    QUERY_MASK = 88888888  /* to a query: the status word is a mask computed from the parameters */
};

/* The mark of an output that could not be computed (bit pattern 0x81aa74fe1c132c0e). */
#define MISSING_VALUE (-1.23456789e-300)

/* How many elements the arrays of a call need at the most, element 0 included: p, y and dy this many for
 * nParams or, where that is more, for the count that the catalogue has for the model; x always CURVEBANK_ROOM_X. */
#define CURVEBANK_ROOM(nParams) (2 * (nParams) + 2)
#define CURVEBANK_ROOM_X 4

/* A model.
 *
 *   flags     EVAL_ bits
 *   perr      the caller's error variable; dereferenced only with EVAL_USE_ERRPTR
 *   nParams   number of parameters in p; models of repeated terms take their number of terms from it
 *   p         parameters p[1..nParams]
 *   x         independent variables x[1..nIndep], for BatesWatts x[1..2]; surfaces mark a failure in x[2]
 *   y         results: y[1..nDep], and one element more per term for models of repeated terms
 *   dy        derivatives of y[1] with respect to p[1..nParams]
 *   reserved  never read; pass 0
 *
 * Some models read and write more entries of p, y and dy than these counts say: some of those whose names end in
 * EVP have more parameters, and some of repeated terms space them wider than they count them. CURVEBANK_ROOM says
 * how far any call may go.
 *
 * The error variable must be 0 on entry: a model reads it after its exponentials and powers, and 33
 * (EDOM) or 34 (ERANGE) left over from an earlier computation makes it fail.
 */
typedef int32_t (*ModelFunc)(int16_t flags, int32_t *perr, int16_t nParams, void *reserved4, int32_t reserved5,
                             const double *p, void *reserved7, double *x, double *y, double *dy);

#endif
