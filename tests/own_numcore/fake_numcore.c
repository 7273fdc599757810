/* A host's math library whose results tell which function was called with what. */
#include <stddef.h>

double normcdf(double z, int tail, void *report)
{
    return tail == 2 && report == NULL ? 1000 + z : 0;
}

double gamcdf(double x, double shape, double scale, int tail, void *report)
{
    return tail == 2 && report == NULL ? 2000 + 100 * x + 10 * shape + scale : 0;
}

double wblcdf(double x, double scale, double shape, void *report)
{
    return report == NULL ? 3000 + 100 * x + 10 * scale + shape : 0;
}

double wblpdf(double x, double scale, double shape, void *report)
{
    return report == NULL ? 4000 + 100 * x + 10 * scale + shape : 0;
}

double numcore_log_gamma(double t)
{
    return t - 4;
}

double numcore_PearsonIV(double p1, double p2, double p3, double p4, double p5, double p6, double x)
{
    return 5000 + p1 + p2 + p3 + p4 + p5 + p6 + x;
}
