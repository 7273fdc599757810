/* Fits a peak of the catalogue through the C door. */
#include <stdio.h>

#include <curvebank/fit.h>

int main(void)
{
    const double x[] = {0, 1, 2, 3, 4, 5, 6, 7, 8}, y[] = {1.1, 0.9, 1.6, 3.2, 5.9, 5.1, 2.5, 1.2, 1.0};
    const double start[] = {1, 4, 1, 5}; /* baseline, centre, width, height: the order of the model */
    curvebank_fit_request request = {.size = sizeof request, .points = 9, .x = x, .y = y, .start = start};
    curvebank_fit_model *peak;
    curvebank_fit_result *result = NULL;
    char message[200];

    if (curvebank_fit_model_catalogue("GaussAmp", 1, &peak, message, sizeof message) ||
        curvebank_fit_run(peak, &request, &result, message, sizeof message))
        return fprintf(stderr, "%s\n", message), 1;
    const double *value = curvebank_fit_result_array(result, CURVEBANK_FIT_VALUES);
    const double *error = curvebank_fit_result_array(result, CURVEBANK_FIT_STANDARD_ERRORS);
    printf("%s\n", curvebank_fit_verdict_word(curvebank_fit_result_verdict(result)));
    for (int i = 0; i < curvebank_fit_model_parameter_count(peak); ++i)
        printf("%s = %.5g +- %.2g\n", curvebank_fit_model_parameter_name(peak, i), value[i], error[i]);
    curvebank_fit_result_destroy(result);
    curvebank_fit_model_destroy(peak);
    return 0;
}
