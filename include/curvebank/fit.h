/* Curvebank: least-squares fits for hosts in any language. Plain C; <curvebank/fit/fit.h> is the door for C++.
 *
 * A host makes a model, fills a request with its data, runs the fit, reads the result by its verdict, and destroys both.
 *
 * Errors: a call that can fail returns one of the codes below and, on failure, writes a line that says what is wrong
 * into message, which has room bytes (cut to fit, always terminated; NULL: not asked for). What it should have made is
 * NULL then. What the data or the model do to a fit is no error but the verdict of its result. No exception leaves the
 * library, not for want of memory either.
 *
 * Arrays are counted from 0. Several columns stand one behind the other: variable i of point k is x[i * points + k], a
 * matrix of points rows as Fortran and Julia store it. What a request points to is read in place while the call lasts and
 * is not kept. NaN stands for what is absent.
 *
 * Ownership: a handle belongs to the host until it is destroyed. Texts (UTF-8, terminated) and arrays that a call
 * returns belong to its handle and live as long. Handles may be destroyed in any order.
 *
 * Threads: a handle never changes after it is made, and nothing is remembered between calls: any number of threads may
 * make any calls, also with the same handles.
 */
#ifndef CURVEBANK_FIT_H
#define CURVEBANK_FIT_H

#include <stddef.h>
#include <stdint.h>

#include "fit/api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What a call returns. */
enum {
    CURVEBANK_FIT_OK = 0,
    CURVEBANK_FIT_BAD_REQUEST = 1,   /* it cannot be carried out as it stands: a wrong name, a start outside its bounds */
    CURVEBANK_FIT_OUT_OF_MEMORY = 2,
    CURVEBANK_FIT_FAILED = 3         /* a fault of the library */
};

/* Models. ------------------------------------------------------------------------------------------------------- */

typedef struct curvebank_fit_model curvebank_fit_model;

/* A model of the catalogue, its case ignored, with that many repeated terms: 1 for a model without such. */
CURVEBANK_FIT_API int curvebank_fit_model_catalogue(const char *name, int terms, curvebank_fit_model **model,
                                                    char *message, size_t room);

/* A formula, "a*exp(-b*x) + c" or "y = a*exp(-b*x) + c". Its parameters are the names that are not among the variables, in
 * order of appearance; their starts are 1. variable_count 0: the one variable x. */
CURVEBANK_FIT_API int curvebank_fit_model_formula(const char *text, int variable_count, const char *const *variables,
                                                  curvebank_fit_model **model, char *message, size_t room);

/* The sum of count models of the same variables. The parameters of each are named with its prefix, which may be "". A
 * constant that a second one adds again starts at 0 and is fixed. */
CURVEBANK_FIT_API int curvebank_fit_model_sum(int count, const char *const *prefixes,
                                              const curvebank_fit_model *const *models, curvebank_fit_model **model,
                                              char *message, size_t room);

CURVEBANK_FIT_API void curvebank_fit_model_destroy(curvebank_fit_model *model); /* or NULL */

CURVEBANK_FIT_API int curvebank_fit_model_parameter_count(const curvebank_fit_model *model);
CURVEBANK_FIT_API int curvebank_fit_model_variable_count(const curvebank_fit_model *model);
CURVEBANK_FIT_API int curvebank_fit_model_output_count(const curvebank_fit_model *model); /* values a point */
CURVEBANK_FIT_API int curvebank_fit_model_is_implicit(const curvebank_fit_model *model); /* the value is a residual */

/* Of parameter or variable i: "" where nothing is known, and for an i that there is not. */
CURVEBANK_FIT_API const char *curvebank_fit_model_parameter_name(const curvebank_fit_model *model, int i);
CURVEBANK_FIT_API const char *curvebank_fit_model_parameter_meaning(const curvebank_fit_model *model, int i);
CURVEBANK_FIT_API const char *curvebank_fit_model_parameter_unit(const curvebank_fit_model *model, int i);
CURVEBANK_FIT_API double curvebank_fit_model_parameter_start(const curvebank_fit_model *model, int i);
CURVEBANK_FIT_API int curvebank_fit_model_parameter_is_fixed(const curvebank_fit_model *model, int i); /* by default */
CURVEBANK_FIT_API const char *curvebank_fit_model_variable_name(const curvebank_fit_model *model, int i);

/* The number of the parameter of that name, or -1. */
CURVEBANK_FIT_API int curvebank_fit_model_parameter_index(const curvebank_fit_model *model, const char *name);

/* The values at points: x of variables times points, values of outputs times points. NaN where there is none. */
CURVEBANK_FIT_API int curvebank_fit_model_values(const curvebank_fit_model *model, const double *parameters,
                                                 int64_t points, const double *x, double *values, char *message,
                                                 size_t room);

/* Fits. --------------------------------------------------------------------------------------------------------- */

/* What is to be fitted. Zero, or NULL, in a member stands for its default: only size, points, x and y must be given.
 * Arrays "by parameter" have as many elements as the model has parameters, in its order. */
typedef struct curvebank_fit_request {
    size_t size;           /* sizeof(curvebank_fit_request): by it the library knows the host's version */
    int64_t points;
    const double *x;       /* variables times points */
    const double *y;       /* outputs times points; not needed for an implicit model */
    const double *weights; /* a point each: 1/variance, up to a common factor; default 1 */
    const double *sigma;   /* standard deviations instead of weights */
    const double *start;   /* by parameter; NaN: the model's own */
    const int *fixed;      /* by parameter: 1 stays at its start, 0 does not, -1 as the model has it by default */
    const double *lower;   /* by parameter; NaN or infinite: none */
    const double *upper;
    const char *const *ties;                /* by parameter: an expression of others that it equals, "2*w1", or NULL */
    const char *const *derived_names;       /* derived_count each: quantities wanted with their errors, as */
    const char *const *derived_expressions; /* expressions of the parameters, "ln(2)/b" */

    /* Called once an iteration by the thread that runs the fit; anything but 0 stops the fit, which gives what it
     * has. The parameters are all of the model's, to be read during the call. */
    int (*watch)(void *context, int iteration, double sum_of_squares, const double *parameters);
    void *watch_context;

    double confidence;  /* of the limits; default 0.95 */
    int max_iterations; /* default 500 */
    int threads;        /* default 1; -1: as many as the machine has. The result has the same bits for any number */
    int derived_count;
    int absolute_sigma; /* 1: sigma, or 1/sqrt(weights), is in the unit of y and not to be scaled by the fit */
    int skip_missing;   /* 1: points with a number that is not finite are left out and counted; 0: an error names one */
} curvebank_fit_request;

typedef struct curvebank_fit_result curvebank_fit_result;

CURVEBANK_FIT_API int curvebank_fit_run(const curvebank_fit_model *model, const curvebank_fit_request *request,
                                        curvebank_fit_result **result, char *message, size_t room);

CURVEBANK_FIT_API void curvebank_fit_result_destroy(curvebank_fit_result *result); /* or NULL */

/* How a fit ended. The first two are success. */
enum {
    CURVEBANK_FIT_CONVERGED = 0,      /* the parameters are at a minimum */
    CURVEBANK_FIT_EXACT = 1,          /* the residuals are at the level of rounding */
    CURVEBANK_FIT_NO_INFLUENCE = 2,   /* a parameter changes nothing that the data could see */
    CURVEBANK_FIT_NOT_SEPARATED = 3,  /* the data do not tell some parameters from others */
    CURVEBANK_FIT_RUNS_TO_INFINITY = 4,
    CURVEBANK_FIT_NO_BETTER_THAN_CONSTANT = 5,
    CURVEBANK_FIT_NO_PROGRESS = 6,    /* no step makes the sum of squares smaller, and yet it is no minimum */
    CURVEBANK_FIT_ITERATION_LIMIT = 7,
    CURVEBANK_FIT_DOMAIN_LEFT = 8,    /* the model has no value at some point */
    CURVEBANK_FIT_OVERFLOW = 9,       /* the numbers leave the range of a double */
    CURVEBANK_FIT_STOPPED = 10        /* by the watcher */
};

CURVEBANK_FIT_API int curvebank_fit_result_verdict(const curvebank_fit_result *result);
CURVEBANK_FIT_API int curvebank_fit_is_success(int verdict);
CURVEBANK_FIT_API const char *curvebank_fit_verdict_word(int verdict); /* "converged" for example; lives for ever */

/* Sentences that go with the verdict: which parameter, which combination, what was left out. */
CURVEBANK_FIT_API int curvebank_fit_result_note_count(const curvebank_fit_result *result);
CURVEBANK_FIT_API const char *curvebank_fit_result_note(const curvebank_fit_result *result, int i);

/* The numbers of a result. */
enum {
    CURVEBANK_FIT_SUM_OF_SQUARES = 0, /* weighted */
    CURVEBANK_FIT_DEGREES_OF_FREEDOM = 1,
    CURVEBANK_FIT_RELATIVE_OFFSET = 2, /* how far from the minimum, in units of its statistical spread */
    CURVEBANK_FIT_ITERATIONS = 3,
    CURVEBANK_FIT_EVALUATIONS = 4,     /* passes over all points */
    CURVEBANK_FIT_POINTS = 5,          /* that were used */
    CURVEBANK_FIT_LEFT_OUT = 6,
    CURVEBANK_FIT_RESIDUAL_SD = 7,     /* sqrt(sum of squares / degrees of freedom) */
    CURVEBANK_FIT_REDUCED_CHI_SQUARE = 8,
    CURVEBANK_FIT_R_SQUARED = 9,
    CURVEBANK_FIT_ADJUSTED_R_SQUARED = 10,
    CURVEBANK_FIT_AIC = 11,            /* the error variance counted as a parameter, here and below */
    CURVEBANK_FIT_AICC = 12,
    CURVEBANK_FIT_BIC = 13
};
CURVEBANK_FIT_API double curvebank_fit_result_number(const curvebank_fit_result *result, int which);

/* The arrays of a result: by parameter, or derived_count for what is derived. */
enum {
    CURVEBANK_FIT_VALUES = 0,
    CURVEBANK_FIT_STANDARD_ERRORS = 1,
    CURVEBANK_FIT_LOWER_LIMITS = 2, /* of the Wald interval at the request's confidence */
    CURVEBANK_FIT_UPPER_LIMITS = 3,
    CURVEBANK_FIT_COVARIANCE = 4,   /* parameters times parameters; 0 for those that were not varied */
    CURVEBANK_FIT_CORRELATION = 5,
    CURVEBANK_FIT_DERIVED_VALUES = 6,
    CURVEBANK_FIT_DERIVED_ERRORS = 7,
    CURVEBANK_FIT_DERIVED_LOWER_LIMITS = 8,
    CURVEBANK_FIT_DERIVED_UPPER_LIMITS = 9
};
CURVEBANK_FIT_API const double *curvebank_fit_result_array(const curvebank_fit_result *result, int which);

/* What held parameter i: a sum of these, 0 for one that was free. */
enum { CURVEBANK_FIT_FIXED = 1, CURVEBANK_FIT_TIED = 2, CURVEBANK_FIT_AT_BOUND = 4 };
CURVEBANK_FIT_API int curvebank_fit_result_parameter_state(const curvebank_fit_result *result, int i);

/* The curve at further points with half the width of its confidence band (prediction 0), or of the band in which a
 * further observation of weight 1 is expected (1). For models of one output. */
CURVEBANK_FIT_API int curvebank_fit_result_band(const curvebank_fit_result *result, const curvebank_fit_model *model,
                                                int64_t points, const double *x, int prediction, double confidence,
                                                double *values, double *half_widths, char *message, size_t room);

#ifdef __cplusplus
}
#endif

#endif
