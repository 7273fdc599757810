/* Calls the models that stand on the host's math library, and prints what they make of it. */
#include <stdio.h>

#include <curvebank/curvebank.h>

static void call(const char *name, double p1, double p2, double p3, double p4, double x1)
{
    uint16_t nParams;
    const ModelFunc model = Get_Func(name, NULL, NULL, &nParams, NULL);
    double p[CURVEBANK_ROOM(4)] = {0, p1, p2, p3, p4}, x[CURVEBANK_ROOM_X] = {0, x1};
    double y[CURVEBANK_ROOM(4)] = {0}, dy[CURVEBANK_ROOM(4)] = {0};
    model(EVAL_VALUE | EVAL_DERIVS, NULL, (int16_t)nParams, NULL, 0, p, NULL, x, y, dy);
    printf("%s %g %g %g\n", name, y[1], dy[2], dy[3]);
}

int main(void)
{
    call("NormalCDF", 0, 1, 1, 2, 5);
    call("LognormalCDF", 0, 1, 0, 1, 1);
    call("GammaCDF", 0, 1, 3, 2, 5);
    call("WeibullCDF", 0, 1, 3, 2, 3);
    call("Poisson", 0, 1, 0, 0, 3);
    return 0;
}
