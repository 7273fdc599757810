/* Curvebank: the lookup functions of the library and its diagnostic command. Plain C.
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

/* The diagnostic command: lists the catalogue, and evaluates a model over the rows of a worksheet with its own
 * derivatives beside forward differences. The worksheet belongs to the host; FuncTest reaches it through a
 * callback.
 */

/* The rows first .. end-1 of a column. */
typedef struct RowRange {
    int64_t first, end;
} RowRange;

/* One cell of a column; the value stands at offset 8. */
typedef struct CellRecord {
    int32_t row;
    double value;
} CellRecord;

/* What FuncTest asks of the callback. A column is whatever handle the host gave for it, or 0 for one that it did
 * not find. */
enum {
    HOST_FIND_COLUMN = 0x3000,  /* a: a name; b: null, or the RowRange to fill. The column's handle, or 0 */
    HOST_EVAL_NUMBER = 0x101c,  /* a: a text; b: the double to fill with its value. 0 on success */
    HOST_GET_CELL = 0x3400,     /* a: a column; b: the CellRecord with the row, to be filled. 0 on success */
    HOST_SET_CELL = 0x3401,     /* a: a column; b: the CellRecord to store. The answer is ignored */
    HOST_UPDATE_COLUMN = 0x3407 /* a: a column; b: the RowRange that was written. The answer is ignored */
};

typedef intptr_t (*HostCallback)(intptr_t reserved, int32_t request, const void *a, void *b); /* reserved is 0 */

/* The message codes whose meaning is fixed. With 17, 18, 19 and 20 the command text is the command, with 3073 the
 * name text; any other code is no command. */
enum {
    FUNC_TEST_LIST = 18,   /* "list" */
    FUNC_TEST_BIND = 19,   /* "x" and "y", and nothing else */
    FUNC_TEST_MODEL = 3073 /* a model's name in the name text, its parameters in the command text */
};

/* A window is an HWND on Windows. Elsewhere it is a pointer to one of these. */
typedef struct HostWindow {
    intptr_t (*procedure)(struct HostWindow *window, uint32_t message, uintptr_t wparam, intptr_t lparam);
} HostWindow;

/* The message that carries a line of text to the window: lparam is the address of the text, 8-bit and terminated,
 * which is only valid during the message. */
enum { FUNC_TEST_LINE = 1024 };

/* Carries out one command; 1 when it was handled, 0 otherwise. The case of commands and names is ignored.
 *
 *   list    sends the window "type NAME" for every row of the catalogue
 *   x       binds the column of that name (column text) as x, together with its row range
 *   y       binds the column that receives the model's value
 *   deriv   binds the columns data1_c .. data1_v as the output columns 1 .. 20
 *   NAME    evaluates the model over the bound rows. The command text lists its parameters, separated by spaces and
 *           commas; each goes to HOST_EVAL_NUMBER, at most 20 are read, those not given are 0. The list ends at a
 *           character other than a letter, a digit, '_', '-' and '.', and with a parameter too long to be a number;
 *           the parameter that ends so is not used.
 *
 * For a model of n parameters, y receives the value of the derivative call, the output columns 1 .. n the model's
 * derivatives, n+1 the value, n+2 .. 2n+1 the forward differences with the step 1e-8. What a model does not compute
 * arrives as MISSING_VALUE; a row whose x cannot be read is left out. What does not fit into 20 columns is dropped.
 *
 * The bindings stay until the same command replaces them, and a column that is not found replaces them too. They
 * are one set a process, unguarded: all commands come from one thread. The callback may run commands too. Nothing but
 * "list" works without a callback.
 */
int32_t FuncTest(void *window, const char *name_text, const char *command_text, const char *column_text,
                 HostCallback callback, uint16_t message);

#ifdef __cplusplus
}
#endif

#endif
