/* What libcurvebank_fit shows to its hosts. Plain C. */
#ifndef CURVEBANK_FIT_API_H
#define CURVEBANK_FIT_API_H

#if !defined(_WIN32)
#define CURVEBANK_FIT_API __attribute__((visibility("default")))
#elif defined(CURVEBANK_FIT_BUILT_HERE)
#define CURVEBANK_FIT_API __declspec(dllexport)
#else
#define CURVEBANK_FIT_API
#endif

#endif
