/* The smallest host: finds a model by name, calls it for one point, prints value and derivatives. */
#include <errno.h>
#include <stdio.h>

#include <curvebank/curvebank.h>

int main(void)
{
    uint16_t nParams;
    ModelFunc model = Get_Func("Parabola", NULL, NULL, &nParams, NULL);
    double p[CURVEBANK_ROOM(3)] = {0, 1, 2, 3}, x[CURVEBANK_ROOM_X] = {0, 0.5}; /* element 0 is not used */
    double y[CURVEBANK_ROOM(3)], dy[CURVEBANK_ROOM(3)];

    if (!model) return 1;
    errno = 0;
    if (model(EVAL_VALUE | EVAL_DERIVS, NULL, (int16_t)nParams, NULL, 0, p, NULL, x, y, dy) != 0) return 1;
    printf("y = %g", y[1]);
    for (int i = 1; i <= nParams; ++i) printf(", dy/dp%d = %g", i, dy[i]);
    printf("\n");
    return 0;
}
